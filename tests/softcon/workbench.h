// SPDX-License-Identifier: Apache-2.0
#ifndef WORKBENCH_H
#define WORKBENCH_H
#include "factions.h"
#include "fdefinitiongenint.h"
#include "fdispatcher.h"
#include "fdocumentation.h"
#include "fgenintcomputation.h"
#include "fhistory.h"
#include "fini.h"
#include "fio.h"
#include "flogmsg.h"
#include "fmainwindow.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fprojectcontrol.h"
#include "frunqueue.h"
#include "fselectionset.h"
#include "fsoftconcomputationitem.h"
#include "fsoftconentryitems.h"
#include "fsoftconlayout.h"
#include "fsoftconlooks.h"
#include "fsoftconscene.h"
#include "fsoftcontemplateitems.h"
#include "fsoftconview.h"
#include "fsoftwareconnector.h"
#include "ftheme.h"

#include <QGraphicsSceneDragDropEvent>
#include <QtTest>
#include <QtWidgets>

/// A window with a new project and one connector, as a user has it after Insert, Connector.
class Workbench
{
public:
    static void once(const QString &folder)
    {
        qputenv("TURNBUCKLE_CONFIG", (folder + "/settings.ini").toUtf8());
        static FDocuTranslator texts;
        QCoreApplication::installTranslator(&texts);
        FObject::initPrototypes();
        FTheme::instance()->setChoice(FTheme::Choice::Light);
        FSoftConLooks::add();
    }

    explicit Workbench(const QString &project = QString())
    {
        FProject::instance()->clear();
        mWindow = std::make_unique<FMainWindow>();
        FSoftConLooks::addTo(mWindow.get());
        mWindow->resize(1300, 900);
        mWindow->show();
        if (!project.isEmpty()) {
            FProjectControl::instance()->open(project);
        } else {
            FProjectControl::instance()->newProject();
            act("insertConnector");
        }
        turn();
    }
    ~Workbench()
    {
        FRunQueue::background()->cancel(); // a test that failed asks nobody
        FHistory::instance()->markClean();
        FProjectControl::instance()->close();
        mWindow.reset();
        FProject::instance()->clear();
        turn();
    }
    static void turn()
    {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    static void act(const char *id)
    {
        FActions::instance()->refresh();
        FActions::instance()->action(QLatin1String(id))->trigger();
        turn();
    }
    FMainWindow *window() const { return mWindow.get(); }
    std::shared_ptr<FGenIntComputation> computation() const
    {
        const auto all = getManageds<FGenIntComputation>();
        return all.empty() ? nullptr : all.front().getPtr();
    }
    std::shared_ptr<FDefinitionGenInt> definition() const
    {
        const auto own = computation()->getConfiguration().getPtr();
        return own ? own->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    }
    std::shared_ptr<FSoftwareConnector> connector() const
    {
        return FSoftwareConnector::of(computation().get());
    }
    FSoftConScene *scene() const { return connector()->scene(); }
    FSoftConView *view() const { return connector()->overviewView(); }
    /// Items of a class, in no order.
    template <class T>
    std::vector<T *> items() const
    {
        std::vector<T *> found;
        for (QGraphicsItem *one : scene()->items())
            if (auto *item = dynamic_cast<T *>(one))
                found.push_back(item);
        return found;
    }
    /// A place in a quadrant where no item stands.
    QPointF placeIn(SoftConArea area) const
    {
        const QRectF all = scene()->sceneRect();
        const double x =
            area == SoftConInput || area == SoftConOutput ? all.right() - 30 : all.left() + 30;
        const double y =
            area == SoftConInput || area == SoftConExport ? all.top() + 60 : all.bottom() - 30;
        return {x, y};
    }
    /// Drags \p data to \p place and lets it go; false if it wasn't welcome there.
    bool drop(QMimeData *data, const QPointF &place) const
    {
        bool isWelcome = false;
        for (const QEvent::Type type : {QEvent::GraphicsSceneDragEnter,
                                        QEvent::GraphicsSceneDragMove, QEvent::GraphicsSceneDrop}) {
            QGraphicsSceneDragDropEvent event(type);
            event.setScenePos(place);
            event.setScreenPos(view()->viewport()->mapToGlobal(view()->mapFromScene(place)));
            event.setMimeData(data);
            event.setPossibleActions(Qt::CopyAction);
            event.setProposedAction(Qt::CopyAction);
            event.setWidget(view()->viewport());
            if (type != QEvent::GraphicsSceneDragEnter)
                event.setAccepted(false);
            QCoreApplication::sendEvent(scene(), &event);
            if (type == QEvent::GraphicsSceneDragMove)
                isWelcome = event.isAccepted();
        }
        turn();
        return isWelcome;
    }
    bool dropFiles(const QStringList &files, SoftConArea area) const
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString &file : files)
            urls << QUrl::fromLocalFile(file);
        data.setUrls(urls);
        return drop(&data, placeIn(area));
    }
    QPoint onScreen(const QGraphicsItem *item) const
    {
        return view()->mapFromScene(item->sceneBoundingRect().center());
    }

private:
    std::unique_ptr<FMainWindow> mWindow;
};
#endif
