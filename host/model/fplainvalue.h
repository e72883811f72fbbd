// SPDX-License-Identifier: Apache-2.0
#ifndef FPLAINVALUE_H
#define FPLAINVALUE_H
#include "fexpr.h"
#include "fscripterror.h"

#include <QJsonValue>
#include <string>

/// For readers: whole numbers of up to 15 digits stand in full, without an exponent; else the
/// shortest text that reads back to the same bits.
std::string printedNumber(double value);

/// What an expression gives now, free of the model: for reports and tables.
struct FPlainValue
{
    enum Kind { None, Number, Truth, Text };

    static FPlainValue of(const FExprBase &expr);
    /// The reason of the innermost command that fails in an expression, or in what it refers to;
    /// empty if none does.
    static FReason failureOf(const FExprBase &expr);
    /// A number, a text, true, false or null; null for numbers that JSON doesn't have.
    QJsonValue json() const;
    /// Infinity in words for reports where json() is null; empty for all else.
    std::string special() const;
    /// With \p digits numbers that aren't whole are cut to so many. \p none for what there isn't.
    std::string shown(const char *none, int digits = 0) const;

    Kind kind = None;
    double number = 0;
    std::string text;
};
#endif
