// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPTPANEL_H
#define FSCRIPTPANEL_H
#include <QStringList>
#include <QWidget>

class FScriptCompleter;
class QLineEdit;
class QPlainTextEdit;

/// The panel "Script": every step of the user as the line that does it, and a field to type one.
class FScriptPanel : public QWidget
{
    Q_OBJECT
public:
    explicit FScriptPanel(QWidget *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void execute();
    void browse(int step);
    QPlainTextEdit *mLines;
    QLineEdit *mField;
    class QLabel *mReason;
    FScriptCompleter *mCompleter;
    QStringList mHistory;
    QString mTyped;
    int mPlace = 0;
};
#endif
