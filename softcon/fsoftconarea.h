// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONAREA_H
#define FSOFTCONAREA_H
#include <functional>

/// The quadrants of the scene, around its centre.
enum SoftConArea {
    SoftConInput = 0,       ///< top right: input files
    SoftConExport = 1,      ///< top left: input geometry
    SoftConOutput = 2,      ///< bottom right: result values
    SoftConImport = 3,      ///< bottom left: result files
    SoftConComputation = 4, ///< the centre
    SoftConNoArea = 5
};
#endif
