// SPDX-License-Identifier: Apache-2.0
#ifndef FSEARCHDIALOG_H
#define FSEARCHDIALOG_H
#include <QPlainTextEdit>
#include <QRegExp>
#include <QWidget>
#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QToolButton;

/// Find and replace in a text: a bar at its foot.
class FSearchDialog : public QWidget
{
    Q_OBJECT
public:
    explicit FSearchDialog(QPlainTextEdit *edit);
    /// Shows the row of the replacement too.
    void setReplace(bool replace);
    /// Takes the focus; what is selected becomes what is looked for.
    void open();
    /// Goes to the next hit, or the one before.
    virtual void repeat(bool backward);
    /// What is looked for; empty if that is nothing or no expression.
    QRegExp expression() const;
    void setExpression(const FSearchDialog &other);
    /// Where to go on when a text has no further hit. The function opens another text at a hit and
    /// answers true, or false if there is none.
    using Elsewhere = std::function<bool(const FSearchDialog &search, bool backward)>;
    void setElsewhere(const QString &title, const Elsewhere &elsewhere);
    /// The next hit in \p document from \p position on; a null cursor if there is none.
    static QTextCursor find(QTextDocument *document, const QRegExp &expression, int position,
                            bool backward);

Q_SIGNALS:
    void highlightingRequested(const QRegExp &expression);
    void resetHighlighting();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QToolButton *makeButton(const char *name, const char *icon, const QString &tip);
    QToolButton *makeOption(const char *name, const QString &text, const QString &tip);
    void makeRows();
    void changed();
    void tellCount();
    void replaceOne();
    void replaceAll();
    void select(const QTextCursor &hit);
    QString replacement(const QRegExp &expression) const;

    QPlainTextEdit *mEdit;
    QLineEdit *mFind, *mWith;
    QToolButton *mCase, *mWord, *mRegular, *mAll;
    QLabel *mSays;
    QWidget *mReplaceRow;
    Elsewhere mElsewhere;
};
#endif
