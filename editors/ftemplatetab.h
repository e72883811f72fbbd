// SPDX-License-Identifier: Apache-2.0
#ifndef FTEMPLATETAB_H
#define FTEMPLATETAB_H
#include "fgenintfile.h"

#include <QTimer>
#include <QWidget>

class FEditor;

/// The tab of a template file: its text, read and written. What is typed becomes a step when the
/// typing rests or the focus goes; the text is loaded when the tab is first seen.
class FTemplateTab : public QWidget
{
    Q_OBJECT
public:
    FTemplateTab(QWidget *parent, const std::shared_ptr<FGenIntFile> &file);
    ~FTemplateTab() override;
    std::shared_ptr<FGenIntFile> file() const { return mFile.lock(); }
    FEditor *editor() const { return mEditor; }
    void setFocusToEditor();
    /// Takes over the text of the model; what is being typed goes into it first.
    void refresh();
    /// Puts what was typed into the model.
    void commit();
    /// Shows a line, from 1, and marks columns in it, from 0; nothing is marked with the length 0.
    void showPlace(int line, int column, int length);

Q_SIGNALS:
    void gotFocus();

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void setFile(const std::shared_ptr<FGenIntFile> &file);

private:
    QString typed() const;
    void load();
    std::weak_ptr<FGenIntFile> mFile;
    FEditor *mEditor;
    QTimer mRest;
    QString mShown; // the model's text, as it was loaded or committed last
    bool mIsLoaded = false;
};
#endif
