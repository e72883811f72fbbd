// SPDX-License-Identifier: Apache-2.0
#ifndef FWELCOMEPAGE_H
#define FWELCOMEPAGE_H
#include <QWidget>

class QVBoxLayout;

/// What is shown while no project is open: New, Open, the recent projects and the examples.
class FWelcomePage : public QWidget
{
    Q_OBJECT
public:
    explicit FWelcomePage(QWidget *parent = nullptr);
    /// Reads the recent projects anew.
    void refresh();

private:
    QWidget *makeExamples();
    QVBoxLayout *mRecent;
};
#endif
