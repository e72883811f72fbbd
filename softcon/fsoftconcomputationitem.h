// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONCOMPUTATIONITEM_H
#define FSOFTCONCOMPUTATIONITEM_H
#include "fsoftconobjectitem.h"

#include <QTimer>

class FExternComputation;

/// The card in the centre: the computation, what it does for the current design, and how that went.
class FSoftConComputationItem : public FSoftConObjectItem
{
    Q_OBJECT
public:
    enum { Type = UserType + 11 };
    FSoftConComputationItem(FSoftConScene *scene, QGraphicsItem *parent,
                            const FExpr<FObject> &object);
    int type() const override { return Type; }

    void init() override;
    QString getToolTip() const override;
    void updateItem() const override;
    void updateIcon() const override;
    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    /// What the card says of the current design.
    struct State
    {
        enum Kind { None, Waiting, Running, Finished, Stale, Failed } kind = None;
        QString design, text; ///< the text in one line
        QString reason;       ///< of a failure, in full
        double progress = -1; ///< 0 to 1; negative where it isn't known
    };
    State state() const;

protected:
    void contextMenuEvent(QGraphicsSceneContextMenuEvent *event) override;
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;

private:
    std::shared_ptr<FExternComputation> computation() const;
    void refresh();

    mutable State mState;
    QTimer mClock; // while a run goes on
};
#endif
