// SPDX-License-Identifier: Apache-2.0
#ifndef FFINDER_H
#define FFINDER_H
#include <QFrame>
#include <QLineEdit>
#include <functional>

class QListWidget;

/// The field "Find anything": actions, objects and what libraries add, found by typing.
class FFinder : public QLineEdit
{
    Q_OBJECT
public:
    struct Hit
    {
        QString text, kind, icon, hint;
        bool isUsable = true;
        std::function<void()> open;
    };
    explicit FFinder(QWidget *parent = nullptr);
    /// Puts the cursor into the field.
    void begin();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void search();
    void choose();
    void place();
    std::vector<Hit> mHits;
    QListWidget *mList;
};
#endif
