// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONITEMSIZE_H
#define FSOFTCONITEMSIZE_H
#include "fenum.h"

/// How large the workbench of a computation shows its items.
enum class SoftConItemSize : unsigned { Large = 0, Medium = 2, Small = 4 };
F_ENUM(SoftConItemSize)
#endif
