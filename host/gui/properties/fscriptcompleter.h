// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPTCOMPLETER_H
#define FSCRIPTCOMPLETER_H
#include <QObject>
#include <QStringList>

class QCompleter;
class QLineEdit;

/// Completes names and members in a field of script text: with Ctrl+Space, and behind a dot or the
/// second letter of a word by itself.
class FScriptCompleter : public QObject
{
    Q_OBJECT
public:
    enum What { Expressions, Statements };
    FScriptCompleter(QLineEdit *field, What what);
    /// What may stand at the end of \p text: members of what stands before a dot, else the names of
    /// objects, functions and, in statements, the words of creators.
    static QStringList candidates(const QString &text, What what);
    bool isOpen() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void complete();
    void insert(const QString &word);
    QLineEdit *mField;
    QCompleter *mCompleter;
    What mWhat;
};
#endif
