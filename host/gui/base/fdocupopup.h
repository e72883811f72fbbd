// SPDX-License-Identifier: Apache-2.0
#ifndef FDOCUPOPUP_H
#define FDOCUPOPUP_H
#include <QFrame>
#include <string>

/// A rich text beside the mouse pointer, which goes with the next click elsewhere or Escape.
class FDocuPopup : public QFrame
{
    Q_OBJECT
public:
    /// Shows the text and returns at once.
    static void exec(const std::string &text);

private:
    explicit FDocuPopup(const QString &text);
};
#endif
