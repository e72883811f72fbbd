// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONCHAINPAGE_H
#define FSOFTCONCHAINPAGE_H
#include "fgenintgraph.h"

#include <QGraphicsView>
#include <QTimer>

class QLabel;
class QTabWidget;

/// The couplings of the project as a picture: a page that follows the model. A click selects an
/// object everywhere, a double click or Enter opens it, the arrow keys go from box to box.
class FSoftConChainPage : public QWidget
{
    Q_OBJECT
public:
    explicit FSoftConChainPage(QWidget *parent = nullptr);
    /// Brings the page of \p documents to the front, after making it if there is none.
    static void show(QTabWidget *documents);

    const FGenIntGraph &graph() const { return mGraph; }
    QGraphicsView *view() const { return mView; }
    /// The middle of a box in the view; for tests and pictures.
    QPoint placeOf(const std::string &id) const;
    /// Index of the box that the keyboard is at, -1 for none.
    int current() const { return mCurrent; }
    void setCurrent(int index);
    void open(int index);
    void fit();
    /// The scale by \p factor, within bounds.
    void zoom(double factor);
    bool exportTo(const QString &path);

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void changedSoon();
    void rebuild();
    void followSelection();
    void exportPicture();
    /// The nearest box in the direction of an arrow key, -1 if there is none.
    int neighbour(int key) const;
    bool keyPressed(int key, Qt::KeyboardModifiers modifiers);

    QGraphicsView *mView;
    QLabel *mEmpty;
    FGenIntGraph mGraph;
    QTimer mSoon;
    int mCurrent = -1;
    bool mIsStale = true, mIsFitted = false;
};
#endif
