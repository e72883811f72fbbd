// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPTERROR_H
#define FSCRIPTERROR_H
#include <string>
#include <vector>

struct FScriptError;

/// Why something is refused. Where one thing was expected and another one found, both stand apart,
/// so that nobody has to take the sentence to pieces.
struct FReason
{
    FReason() = default;
    FReason(std::string text)
        : message(std::move(text))
    {
    }
    FReason(const char *text)
        : message(text)
    {
    }
    FReason(std::string text, std::string whatExpected, std::string whatFound)
        : message(std::move(text))
        , expected(std::move(whatExpected))
        , found(std::move(whatFound))
    {
    }
    static FReason unexpected(std::string expected, std::string found)
    {
        return FReason(std::string(), std::move(expected), std::move(found));
    }

    bool empty() const { return message.empty() && expected.empty() && found.empty(); }
    /// "message: expected ..., found ...".
    std::string text() const;
    /// The same with what it is about in front.
    FReason about(const std::string &what) const;

    std::string message; ///< a sentence, or what the expectation is about; may be empty
    std::string expected, found;
    std::vector<FScriptError> causes; ///< errors in other texts that led to this one
};

/// An error in a script or a definition, with its place. Line and column count from 1; 0 is none.
struct FScriptError
{
    std::string file;
    size_t line = 0, column = 0;
    FReason reason;
    std::string text() const { return reason.text(); }
    /// "file:line:column: text".
    std::string toString() const;
};
#endif
