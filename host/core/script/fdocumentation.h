// SPDX-License-Identifier: Apache-2.0
#ifndef FDOCUMENTATION_H
#define FDOCUMENTATION_H
#include <QTranslator>
#include <string>
#include <vector>

/// Answers the documentation keys, which begin with "!", from the files in the resource folder
/// ":/documentation". Nothing is loaded before the first key is asked for.
class FDocuTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    /// An empty text for a key that no file knows, never a null one: the key itself must not be
    /// shown.
    QString translate(const char *context, const char *key, const char *comment = nullptr,
                      int n = -1) const override;
};

/// The texts behind classes, commands and functions.
namespace FDocumentation {
/// Every key that the registry asks for: classes, commands, their arguments, what they return, and
/// examples of commands.
std::vector<std::string> keys();
/// Every key that has a text.
std::vector<std::string> documentedKeys();
std::string text(const std::string &key);
} // namespace FDocumentation
#endif
