// SPDX-License-Identifier: Apache-2.0
#include "foutputpanel.h"

#include "feditor.h"
#include "fobjectmanager.h"
#include "fpathmanager.h"
#include "frunqueue.h"
#include "ftheme.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollBar>
#include <QTimer>

namespace {
constexpr int kReadMilliseconds = 300;
const char *const kFiles[] = {"stdout.txt", "stderr.txt"};

/// The end of a file, from the first whole line on if it doesn't fit.
QString endOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const bool isCut = file.size() > FOutputPanel::kShown;
    if (isCut)
        file.seek(file.size() - FOutputPanel::kShown);
    QByteArray bytes = file.read(FOutputPanel::kShown);
    if (isCut)
        bytes.remove(0, bytes.indexOf('\n') + 1);
    bytes.replace('\0', '.');
    return QString::fromUtf8(bytes);
}
} // namespace

FOutputPanel::FOutputPanel(QWidget *parent)
    : QWidget(parent)
    , mRuns(new QComboBox(this))
    , mFollow(new QCheckBox(tr("&Follow"), this))
    , mText(new QPlainTextEdit(this))
    , mTimer(new QTimer(this))
{
    mRuns->setObjectName(QStringLiteral("outputRun"));
    mRuns->setAccessibleName(tr("Run whose output is shown"));
    mRuns->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    mFollow->setObjectName(QStringLiteral("outputFollow"));
    mFollow->setToolTip(tr("Show the run that started last, and its newest lines."));
    mFollow->setChecked(true);
    mText->setObjectName(QStringLiteral("runOutput"));
    mText->setAccessibleName(tr("Output of the run"));
    mText->setReadOnly(true);
    mText->setTabChangesFocus(true);
    mText->setLineWrapMode(QPlainTextEdit::NoWrap);
    mText->setFrameShape(QFrame::NoFrame);
    mText->setFont(FTheme::fixedFont());
    mText->setPlaceholderText(tr("What a program prints while it runs stands here."));
    auto *above = new QHBoxLayout;
    above->setContentsMargins(FTheme::space(3), FTheme::space(1), FTheme::space(3),
                              FTheme::space(1));
    above->setSpacing(FTheme::space(2));
    auto *label = new QLabel(tr("&Run"), this);
    label->setBuddy(mRuns);
    above->addWidget(label);
    above->addWidget(mRuns);
    above->addWidget(mFollow);
    above->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(above);
    layout->addWidget(mText);
    mTimer->setInterval(kReadMilliseconds);
    connect(mTimer, &QTimer::timeout, this, &FOutputPanel::readOn);
    connect(mRuns, qOverload<int>(&QComboBox::activated), this, [this] {
        mFollow->setChecked(false);
        mSizes[0] = -1;
        readOn();
    });
    connect(mFollow, &QCheckBox::toggled, this, &FOutputPanel::listRuns);
    const FRunQueue *queue = FRunQueue::background();
    connect(queue, &FRunQueue::started, this, &FOutputPanel::listRuns);
    connect(queue, &FRunQueue::ended, this, [this] {
        if (isVisible())
            readOn();
    });
}

void FOutputPanel::showRun(const std::shared_ptr<FExternComputation> &computation,
                           const std::shared_ptr<FDesign> &design)
{
    mFollow->setChecked(false);
    const QString folder = Q(FPathManager::instance()->getResultsDirAbs(computation, design));
    int row = mRuns->findData(folder);
    if (row < 0) {
        mRuns->addItem(Q(computation->getName() + " \u00b7 " + design->getName()), folder);
        row = mRuns->count() - 1;
    }
    mRuns->setCurrentIndex(row);
    mSizes[0] = -1;
    readOn();
}

void FOutputPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    listRuns();
    readOn();
    mTimer->start();
}

void FOutputPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    mTimer->stop(); // nobody looks
}

/// Runs of now, and what was chosen before.
void FOutputPanel::listRuns()
{
    QString newest;
    QDateTime since;
    for (const FRunQueue::Item &item : FRunQueue::background()->items()) {
        if (!item.isRunning)
            continue;
        const QString folder = Q(item.directory);
        if (mRuns->findData(folder) < 0)
            mRuns->addItem(Q(item.computation + " \u00b7 " + item.design), folder);
        if (newest.isEmpty() || item.since >= since) {
            newest = folder;
            since = item.since;
        }
    }
    if (mFollow->isChecked() && !newest.isEmpty())
        mRuns->setCurrentIndex(mRuns->findData(newest));
    if (isVisible())
        readOn();
}

void FOutputPanel::readOn()
{
    const QString folder = mRuns->currentData().toString();
    if (folder.isEmpty())
        return;
    bool isSame = folder == mFolder;
    for (int i = 0; i < 2; ++i) {
        const QFileInfo info(folder + '/' + QLatin1String(kFiles[i]));
        const qint64 size = info.exists() ? info.size() : 0;
        isSame = isSame && size == mSizes[i];
        mSizes[i] = size;
    }
    if (isSame)
        return;
    mFolder = folder;
    QString text = endOf(folder + '/' + QLatin1String(kFiles[0]));
    const QString errors = endOf(folder + '/' + QLatin1String(kFiles[1]));
    if (!errors.isEmpty())
        text += (text.isEmpty() || text.endsWith('\n') ? "" : "\n") + tr("--- standard error ---") +
                "\n" + errors;
    QScrollBar *bar = mText->verticalScrollBar();
    const int place = bar->value();
    const bool atEnd = mFollow->isChecked() || place == bar->maximum();
    mText->setPlainText(text);
    bar->setValue(atEnd ? bar->maximum() : place);
}
