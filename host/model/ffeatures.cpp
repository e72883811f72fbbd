// SPDX-License-Identifier: Apache-2.0
#include "ffeatures.h"

F_CLASS_IMPL(FDrawable)
F_CLASS_IMPL(FEntityGroup)
F_CLASS_IMPL(FFeatureMember)
F_CLASS_IMPL(FFeatureDefinitionBase)
