// SPDX-License-Identifier: Apache-2.0
#ifndef FLOOKS_H
#define FLOOKS_H
#include "fmanaged.h"

#include <QIcon>
#include <QString>
#include <functional>

/// How the objects of a class look to a user. What a class doesn't say it has from its base.
struct FClassLook
{
    using Objects = std::vector<std::shared_ptr<FObject>>;
    QString icon;          ///< key
    QString noun;          ///< "Parameter": what an object is called
    QString group;         ///< heading in the tree, "Parameters"
    double place = 0;      ///< of the group, by size; 0 as the base has it
    bool isHidden = false; ///< another object stands for it
    /// What is shown below an object, beside what names it as its tree parent.
    std::function<Objects(const FObject &)> children;
    /// A short text at the right edge, such as a value.
    std::function<QString(const FObject &)> detail;
    /// Icon and words of its state; empty for a state that is no news.
    std::function<std::pair<QString, QString>(const FObject &)> state;
    /// Names of the objects that are deleted with it.
    std::function<QStringList(const FObject &)> takesAlong;
    /// Opens the object by a double click; false if there is nothing to open.
    std::function<bool(FObject &)> open;
};

/// The looks of all classes. Libraries add theirs at start; a class without one is still shown, as
/// what it is derived from.
namespace FLooks {
void add(const FClassInfo &klass, const FClassLook &look);
/// With what the bases say.
const FClassLook &of(const FClassInfo &klass);
inline const FClassLook &of(const FObject &object) { return of(object.classInfo()); }
/// The icon of an object's class.
QIcon icon(const FObject &object);
/// A name for an object of any kind.
QString nameOf(const FObject &object);
} // namespace FLooks
#endif
