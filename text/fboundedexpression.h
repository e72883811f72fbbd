// SPDX-License-Identifier: Apache-2.0
#ifndef FBOUNDEDEXPRESSION_H
#define FBOUNDEDEXPRESSION_H
#include <QRegExp>

/// Regular expressions that somebody else wrote. The engine writes repetitions out when it
/// compiles, and "(((a?){30}){30}){30}" would take gigabytes.
namespace FBoundedExpression {
/// Why an expression is not taken, empty if it is.
QString refusal(const QString &expression);
/// The expression; one that matches nothing if it is refused.
QRegExp compiled(const QString &expression);
} // namespace FBoundedExpression
#endif
