// SPDX-License-Identifier: Apache-2.0
#include "fobjecteditorwgt.h"

#include "fchanges.h"
#include "fdesign.h"
#include "fdispatcher.h"
#include "flooks.h"
#include "fpropertyeditor.h"
#include "fselectionset.h"
#include "ftheme.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

namespace {
std::vector<FObjectEditorWgt *> &allEditors()
{
    static std::vector<FObjectEditorWgt *> editors;
    return editors;
}
} // namespace

FObjectEditorWgt::FObjectEditorWgt(QWidget *parent)
    : QScrollArea(parent)
    , mContent(new QWidget(this))
    , mName(new QLineEdit(mContent))
    , mTitle(new QLabel(mContent))
    , mAbout(new QLabel(mContent))
    , mEmpty(new QLabel(tr("Nothing is selected. Select an object in the tree or in the overview."),
                        mContent))
{
    allEditors().push_back(this);
    setObjectName(QStringLiteral("objectEditor"));
    setAccessibleName(tr("Properties"));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mContent->setObjectName(QStringLiteral("objectEditorContent"));
    auto *layout = new QVBoxLayout(mContent);
    const int space = FTheme::space(3);
    layout->setContentsMargins(space, space, space, space);
    layout->setSpacing(FTheme::space(1));
    mName->setObjectName(QStringLiteral("objectName"));
    mName->setAccessibleName(tr("Name"));
    mName->setToolTip(tr("Name of the object"));
    mTitle->setObjectName(QStringLiteral("objectTitle"));
    mAbout->setObjectName(QStringLiteral("muted"));
    mAbout->setWordWrap(true);
    mEmpty->setObjectName(QStringLiteral("muted"));
    mEmpty->setWordWrap(true);
    for (QWidget *part : {static_cast<QWidget *>(mName), static_cast<QWidget *>(mTitle),
                          static_cast<QWidget *>(mAbout), static_cast<QWidget *>(mEmpty)})
        layout->addWidget(part);
    layout->addStretch(1);
    setWidget(mContent);
    connect(mName, &QLineEdit::editingFinished, this, [this] {
        if (mObjects.size() != 1 || !mName->isModified())
            return;
        mName->setModified(false);
        const auto result =
            FDispatcher::execute(FExprBase(mObjects.front()), "setName",
                                 {FExprBase(f_make_shared<FString>(S(mName->text())))});
        if (!result.error.empty())
            mAbout->setText(Q(result.error.text()));
        else
            showHead();
    });
    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::selectionChanged, this, [this] {
        if (mFollows)
            followSelection();
    });
    connect(feed, &FChanges::changed, this, &FObjectEditorWgt::followSoon);
    connect(feed, &FChanges::designChanged, this, &FObjectEditorWgt::followSoon);
    connect(feed, &FChanges::projectClosing, this, [this] {
        mObjects.clear();
        clearBody();
    });
    reinitialize();
}

FObjectEditorWgt::~FObjectEditorWgt()
{
    auto &all = allEditors();
    all.erase(std::find(all.begin(), all.end(), this));
}

FObjectEditorWgt *FObjectEditorWgt::instance()
{
    static QPointer<FObjectEditorWgt> editor;
    if (!editor)
        editor = new FObjectEditorWgt;
    return editor;
}

void FObjectEditorWgt::setObjects(const std::vector<FExpr<FObject, true>> &objects)
{
    mFollows = false;
    mObjects.clear();
    for (const auto &object : objects)
        if (object.getExpr())
            mObjects.push_back(object.getExpr());
    mIsOld = true;
    reinitialize();
}

void FObjectEditorWgt::followSelection()
{
    mObjects.clear();
    for (const auto &object : FSelectionSet::instance()->getObjects())
        if (object)
            mObjects.push_back(object.getExpr());
    mIsOld = true;
    if (isVisible())
        reinitialize();
}

void FObjectEditorWgt::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    if (mIsOld)
        reinitialize();
}

/// Once in a turn, however much has changed; not while nobody looks.
void FObjectEditorWgt::followSoon()
{
    mIsOld = true;
    if (mPending || !isVisible())
        return;
    mPending = true;
    QTimer::singleShot(0, this, [this] {
        mPending = false;
        reinitialize();
    });
}

void FObjectEditorWgt::reinitializeAll()
{
    for (FObjectEditorWgt *editor : allEditors()) {
        editor->mIsOld = true;
        if (editor->isVisible())
            editor->reinitialize();
    }
}

void FObjectEditorWgt::showHead()
{
    const bool isOne = mObjects.size() == 1;
    mEmpty->setVisible(mObjects.empty());
    mAbout->setVisible(!mObjects.empty());
    const auto managed = isOne ? std::dynamic_pointer_cast<FManaged>(mObjects.front()) : nullptr;
    const bool hasName = managed && managed != FDesign::baseline();
    mName->setVisible(hasName);
    mTitle->setVisible(!mObjects.empty() && !hasName);
    if (mObjects.empty())
        return;
    const FClassLook &look = FLooks::of(*mObjects.front());
    if (hasName && !mName->isModified() && mName->text() != FLooks::nameOf(*managed))
        mName->setText(FLooks::nameOf(*managed));
    mTitle->setText(isOne ? FLooks::nameOf(*mObjects.front())
                          : tr("%1 objects").arg(mObjects.size()));
    QString about = look.noun;
    if (isOne && look.state) {
        const QString state = look.state(*mObjects.front()).second;
        if (!state.isEmpty())
            about += " \u00b7 " + state;
    }
    mAbout->setText(about);
}

void FObjectEditorWgt::clearBody()
{
    mEditors.clear();
    delete mBody;
    mBody = nullptr;
}

void FObjectEditorWgt::reinitialize()
{
    mIsOld = false;
    mObjects.erase(std::remove_if(mObjects.begin(), mObjects.end(),
                                  [](const auto &object) { return object->isDestroyed(); }),
                   mObjects.end());
    showHead();
    const std::vector<FProperty> properties = FProperties::of(mObjects);
    const bool isSame = mBody && properties.size() == mEditors.size() &&
                        std::equal(properties.begin(), properties.end(), mEditors.begin(),
                                   [](const FProperty &property, const FPropertyEditor *editor) {
                                       return property.isSameAs(editor->property());
                                   });
    if (isSame) {
        for (FPropertyEditor *editor : mEditors)
            editor->refresh();
        return;
    }
    for (FPropertyEditor *editor : mEditors)
        editor->commit(); // what was typed belongs to the objects of before
    clearBody();
    mName->setModified(false);
    mBody = new QWidget(mContent);
    auto *layout = new QVBoxLayout(mBody);
    layout->setContentsMargins(0, FTheme::space(2), 0, 0);
    layout->setSpacing(FTheme::space(2));
    QString category;
    for (const FProperty &property : properties) {
        if (property.category != category) {
            category = property.category;
            auto *heading = new QLabel(category.isEmpty() ? tr("General") : category, mBody);
            heading->setObjectName(QStringLiteral("sectionHeading"));
            layout->addWidget(heading);
            auto *line = new QFrame(mBody);
            line->setObjectName(QStringLiteral("sectionLine"));
            line->setFixedHeight(1);
            layout->addWidget(line);
        }
        auto *editor = new FPropertyEditor(property, mBody);
        mEditors.push_back(editor);
        layout->addWidget(editor);
    }
    static_cast<QVBoxLayout *>(mContent->layout())
        ->insertWidget(mContent->layout()->count() - 1, mBody);
    mBody->show();
}
