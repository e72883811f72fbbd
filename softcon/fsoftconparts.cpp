// SPDX-License-Identifier: Apache-2.0
#include "fsoftconcomputationitem.h"
#include "fsoftcondialogs.h"
#include "fsoftconentryitems.h"
#include "fsoftconlayoutgrids.h"
#include "fsoftconlayoutlist.h"
#include "fsoftcontabbar.h"
#include "fsoftcontemplateitems.h"
#include "fsoftconview.h"
