// SPDX-License-Identifier: Apache-2.0
#ifndef FOPERATORS_H
#define FOPERATORS_H
#include "fcmd.h"
#include "fcmdmanager.h"

/// Operators and functions of expressions. They are commands without a receiver that are
/// calculated anew when an operand changes.
namespace FOperators {
/// Precedence of a binary operator, 0 if \p symbol is none; a larger one binds closer.
int precedence(const std::string &symbol);
bool isRightAssociative(const std::string &symbol);
/// An expression node; null, and in \p unfit the operand that can't be one.
FExprBase make(const std::string &symbol, const std::vector<FExprBase> &operands,
               std::string *unfit);
/// Looks a function up, such as sqrt; null if there is none.
FCmdManager::Info function(const std::string &name);
std::vector<std::string> functionNames();
/// Script text of an expression.
std::string text(const FCmd &node);
} // namespace FOperators

/// The prototypes of commands, under their public names.
namespace FCmdPrototypes {
void add(const std::string &publicName, const std::shared_ptr<FCmd> &prototype);
}
#endif
