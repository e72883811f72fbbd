// SPDX-License-Identifier: Apache-2.0
#ifndef FPROPERTY_H
#define FPROPERTY_H
#include "fcmd.h"

#include <QStringList>
#include <functional>

/// One thing about objects that a user sees and may change: how it is called, what it is now, how
/// it is set. Made from the registry; a library's attributes need nothing else.
struct FProperty
{
    enum Kind { Expression, Text, Truth, Choice, File, Object, ReadOnly };
    using Objects = std::vector<std::shared_ptr<FObject>>;

    QString id; ///< of the command, or of the command and the name of an entry
    QString title, category, toolTip;
    double weight = 0; ///< of the category: heavier ones first
    Kind kind = Text;
    QStringList words;                 ///< of a choice, in their order
    const FClassInfo *klass = nullptr; ///< that an object must have
    std::string command;               ///< which sets it
    Objects receivers;                 ///< that it is set on
    std::function<FExprBase(const FObject &)> value;
    QString placeholder;     ///< of an empty field
    bool mayBeEmpty = false; ///< an empty text unsets it, by reset
    std::function<FReason()> reset;
    std::function<FReason(const FExprBase &)> set; ///< in place of the command

    /// The value of each receiver as text, one if all are the same, none if they differ.
    QStringList texts() const;
    /// The value as it counts now, if the text is more than a plain number; else empty.
    QString current() const;
    /// Sets what \p text says, as one step. The reason tells the column where there is one.
    FReason commit(const QString &text) const;
    bool isSameAs(const FProperty &other) const;
};

namespace FProperties {
/// Script text of \p value as a field shows it: 60 for 60.0.
QString fieldText(const FExprBase &value);

/// What all of \p objects have, by category.
std::vector<FProperty> of(const FProperty::Objects &objects);
} // namespace FProperties
#endif
