// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONITEMSTRUCTURE_H
#define FSOFTCONITEMSTRUCTURE_H
#include "fexpr.h"

#include <QString>

/// An item that is still to be made.
struct FSoftConItemStructure
{
    virtual ~FSoftConItemStructure() = default;
    FExpr<FObject> mObject; ///< the prototype, or the object, that selects the kind of item
    QString mFilePath;
    QString mRootPath;
    qint64 mFileSize = 0; ///< bytes
};
#endif
