// SPDX-License-Identifier: Apache-2.0
// The editor of a result template: what it is made of, and what belongs to the file.
#include "fgenintresultsfileeditor.h"

#include "fattribcmdsetaveragerows.h"
#include "fgeninteditorhandles.h"
#include "fgenintresultsfileedit.h"
#include "fgeninttext.h"
#include "fgenintworkbench.h"
#include "fgroupbox.h"
#include "fhistory.h"
#include "ficons.h"
#include "fini.h"
#include "fmarloctrl.h"
#include "fpropertyeditor.h"
#include "fspinbox.h"
#include "ftheme.h"
#include "ftoolbutton.h"
#include "fviewctrl.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QRegExpValidator>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QSplitter>
#include <QTableWidget>
#include <QTimer>

QColor FGenIntResultsFileEditor::sAnchorBackground = QColor(168, 247, 247);
QColor FGenIntResultsFileEditor::sAnchorForeground = Qt::black;
QColor FGenIntResultsFileEditor::sResultLineBackground = QColor(207, 246, 207);
QColor FGenIntResultsFileEditor::sResultLineForeground = Qt::black;
QColor FGenIntResultsFileEditor::sColumnBackground = QColor(154, 0, 51);
QColor FGenIntResultsFileEditor::sColumnForeground = Qt::white;

namespace {
const auto kSplitterKey = QStringLiteral("GenericIntegration/splitter/main");

/// Where the name of a file begins behind its folders.
int nameBegin(const QString &path)
{
    return QRegExp(QStringLiteral("\\\\|/")).lastIndexIn(path) + 1;
}
} // namespace

FGenIntResultsFileEditor::FGenIntResultsFileEditor(QWidget *parent,
                                                   const FExpr<FGenIntResultsFile> &file,
                                                   const FExpr<FExternComputation> &computation)
    : FTemplateTab(parent, computation)
    , mHandle(f_make_shared<FGenIntResultsFileEditorHandle>(this))
    , mResultsFile(file)
    , mAverageRows(f_make_shared<FAttribCmdSetAverageRows>(this))
    , mRowsCommand(mAverageRows)
{
    mHandle->setImediateUpdate(true);
    setFile(file.getPtr());
    registerHandle();
}

FGenIntResultsFileEditor::~FGenIntResultsFileEditor() = default;

void FGenIntResultsFileEditor::setResultsFile(const FExpr<FGenIntResultsFile> &file)
{
    if (mResultsFile.getExpr() == file.getExpr())
        return;
    mResultsFile.deregisterClient(mHandle);
    mResultsFile = file;
    setFile(file.getPtr());
    registerHandle();
}

void FGenIntResultsFileEditor::registerHandle()
{
    mResultsFile.registerClient(mHandle, false);
    mRowsCommand.registerClient(mHandle, false);
}

void FGenIntResultsFileEditor::init()
{
    mSplitter = new QSplitter(this);
    mSplitter->setChildrenCollapsible(false);
    mSplitter->addWidget(makeControls());
    mSplitter->addWidget(makeSample());
    mSplitter->setStretchFactor(1, 1);
    mSplitter->setSizes({400, 600});
    const QVariant state = FIni().value(kSplitterKey);
    if (state.isValid())
        mSplitter->restoreState(state.toByteArray());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mSplitter);
    refreshLabels();
    takeTheme();
    connect(FTheme::instance(), &FTheme::changed, this, [this] {
        takeTheme();
        if (isLoaded()) {
            paintMarks();
            fillPreview();
        }
    });
}

void FGenIntResultsFileEditor::takeTheme()
{
    const auto take = [](QColor *colour, const char *role) { *colour = FTheme::color(role); };
    take(&sAnchorBackground, "anchor-ground");
    take(&sAnchorForeground, "anchor");
    take(&sResultLineBackground, "result-line-ground");
    take(&sResultLineForeground, "result-line");
    take(&sColumnBackground, "cell-ground");
    take(&sColumnForeground, "cell");
}

QWidget *FGenIntResultsFileEditor::row(QVBoxLayout *group, const QString &label,
                                       const QList<QWidget *> &fields, const char *name,
                                       bool isLast)
{
    auto *row = new QWidget(this);
    row->setObjectName(QStringLiteral("AttributeRow"));
    if (isLast)
        row->setProperty("last", 1);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(FTheme::space(2));
    auto *text = new QLabel(label, row);
    mLabels << text;
    layout->addWidget(text);
    for (QWidget *field : fields)
        layout->addWidget(
            field, qobject_cast<QToolButton *>(field) || qobject_cast<QCheckBox *>(field) ? 0 : 1);
    if (qobject_cast<QCheckBox *>(fields.last()) || qobject_cast<QRadioButton *>(fields.last()))
        layout->addStretch(1);
    QWidget *main = fields.first();
    for (QWidget *field : fields)
        if (!qobject_cast<QToolButton *>(field)) {
            main = field;
            break;
        }
    main->setObjectName(QLatin1String(name));
    main->setAccessibleName(label);
    text->setBuddy(main);
    group->addWidget(row);
    return row;
}

namespace {
QVBoxLayout *addGroup(QVBoxLayout *all, const QString &title, QWidget *parent, int stretch = 0)
{
    auto *box = new FGroupBox(title, parent);
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, FTheme::space(1), 0, FTheme::space(2));
    layout->setSpacing(4);
    all->addWidget(box, stretch);
    return layout;
}
} // namespace

QWidget *FGenIntResultsFileEditor::makeControls()
{
    auto *pane = new QWidget(this);
    pane->setObjectName(QStringLiteral("resultControls"));
    auto *all = new QVBoxLayout(pane);
    all->setContentsMargins(8, 8, 8, 8);
    all->setSpacing(0);
    // On a low screen the controls scroll; the preview stays in sight.
    auto *controls = new QWidget(this);
    controls->setObjectName(QStringLiteral("resultControls"));
    auto *groups = new QVBoxLayout(controls);
    groups->setContentsMargins(0, 0, FTheme::space(1), 0);
    groups->setSpacing(0);
    makeGeneral(groups);
    makeSeparators(groups);
    makeValues(groups);
    groups->addStretch(1);
    auto *area = new QScrollArea(this);
    area->setObjectName(QStringLiteral("resultControlsArea"));
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(controls);
    area->setMinimumWidth(controls->sizeHint().width() + FTheme::space(4));
    all->addWidget(area, 1);
    makePreview(all);
    return pane;
}

void FGenIntResultsFileEditor::makeGeneral(QVBoxLayout *all)
{
    mGeneral = addGroup(all, tr("General"), this);
    mName = new QLineEdit(this);
    mName->setEnabled(false);
    row(mGeneral, tr("Template Name"), {mName}, "templateName");
    connect(mName, &QLineEdit::editingFinished, this, &FGenIntResultsFileEditor::fileNameChanged);
    mPath = new QLineEdit(this);
    mPath->setToolTip(tr("Subfolder of current result directory"));
    row(mGeneral, tr("Subfolder"), {mPath}, "subfolder", true);
    connect(mPath, &QLineEdit::editingFinished, this, &FGenIntResultsFileEditor::filePathChanged);
}

void FGenIntResultsFileEditor::makeSeparators(QVBoxLayout *all)
{
    QVBoxLayout *group = addGroup(all, tr("Column Separator"), this);
    mFindNumbers = new QRadioButton(this);
    mFindNumbers->setChecked(true);
    mFindNumbers->setToolTip(tr("A column is a number, whatever stands between"));
    row(group, tr("Find numbers"), {mFindNumbers}, "findNumbers");
    mCustom = new QRadioButton(this);
    mCustom->setToolTip(tr("Columns are what stands between separators"));
    row(group, tr("Custom"), {mCustom}, "customSeparator");
    auto *buttons = new QButtonGroup(this);
    buttons->addButton(mFindNumbers, 0);
    buttons->addButton(mCustom, 1);
    connect(buttons, &QButtonGroup::idClicked, this,
            &FGenIntResultsFileEditor::numberSeparatorChanged);
    mSpaces = new QCheckBox(this);
    mSpaces->setChecked(true);
    mSpacesRow = row(group, tr("Spaces & Tabs").replace('&', "&&"), {mSpaces}, "spacesAndTabs");
    connect(mSpaces, &QCheckBox::clicked, this,
            &FGenIntResultsFileEditor::spacesAndTabsSeparatorChanged);
    mRegExp = new QLineEdit(this);
    mRegExpRow = row(group, tr("Regular Expression"), {mRegExp}, "regExpSeparator", true);
    connect(mRegExp, &QLineEdit::editingFinished, this,
            &FGenIntResultsFileEditor::regExpSeparatorChanged);
}

void FGenIntResultsFileEditor::makeValues(QVBoxLayout *all)
{
    using Editor = FGenIntResultsFileEditor;
    QVBoxLayout *group = addGroup(all, tr("Values"), this);
    const auto button = [this](const char *name, const char *icon, const QString &text) {
        auto *made = new FToolButton(this);
        made->setObjectName(QLatin1String(name));
        made->setIcon(FIcons::icon(QLatin1String(icon)));
        made->setText(text);
        made->setToolTip(text);
        made->setAutoRaise(true);
        return made;
    };
    mDelete = button("deleteValue", ":/delete", tr("Delete Value"));
    mAdd = button("addValue", ":/add", tr("Add Value"));
    connect(mDelete, &QToolButton::clicked, this, &Editor::deleteResultsValue);
    connect(mAdd, &QToolButton::clicked, this, &Editor::addResultsValue);
    mSelector = new QComboBox(this);
    mSelector->setEditable(true);
    mSelector->setInsertPolicy(QComboBox::InsertAtCurrent);
    mSelector->setDuplicatesEnabled(true);
    mSelector->setCompleter(nullptr);
    mSelector->lineEdit()->setAccessibleName(tr("Name"));
    mSelector->lineEdit()->setValidator(
        new QRegExpValidator(QRegExp(QStringLiteral("[\\d|\\s|\\w]*")), this));
    row(group, tr("Name"), {mDelete, mSelector, mAdd}, "valueName");
    connect(mSelector->lineEdit(), &QLineEdit::textEdited, this,
            &Editor::currentResultsValueNameChanged);
    connect(mSelector, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this](int index) { currentResultsValueChanged(mSelector->itemText(index)); });
    mType = new QComboBox(this);
    for (const auto &type : {FDouble::mpNull->getClass(), FFileName::mpNull->getClass()})
        mType->addItem(Q(type));
    mTypeRow = row(group, tr("Type"), {mType}, "valueType");
    connect(mType, &QComboBox::currentTextChanged, this, &Editor::valueTypeChanged);
    mImportType = new QComboBox(this);
    mImportType->addItem(QStringLiteral("tecplot"));
    mImportRow = row(group, tr("Import Type"), {mImportType}, "importType");
    mImportRow->hide();
    connect(mImportType, &QComboBox::currentTextChanged, this, &Editor::fileImportTypeChanged);
    mLine = new FSpinBox(this);
    mLine->setRange(-9999, 9999);
    mLineRow = row(group, tr("Line"), {mLine}, "valueLine");
    connect(mLine, qOverload<int>(&QSpinBox::valueChanged), this, &Editor::resultsLineChanged);
    mColumn = new FSpinBox(this);
    mColumn->setRange(0, 999);
    row(group, tr("Column"), {mColumn}, "valueColumn");
    connect(mColumn, qOverload<int>(&QSpinBox::valueChanged), this, &Editor::resultsColumnChanged);
    mAnchor = new QLineEdit(this);
    mAnchorRow = row(group, tr("Anchor String"), {mAnchor}, "valueAnchor");
    connect(mAnchor, &QLineEdit::editingFinished, this, &Editor::anchorChanged);
    mOccurrence = new QComboBox(this);
    for (const auto occurrence : {GenIntAnchorOccurrence::First, GenIntAnchorOccurrence::Last})
        mOccurrence->addItem(
            Q(FEnum<GenIntAnchorOccurrence>::mStrRep.getValue(unsigned(occurrence))));
    mOccurrenceRow = row(group, tr("Occurrence"), {mOccurrence}, "valueOccurrence");
    connect(mOccurrence, &QComboBox::currentTextChanged, this, &Editor::occurrenceChanged);
    mAverage = new QCheckBox(this);
    FProperty rows;
    rows.id = QStringLiteral("setAverageRows");
    rows.kind = FProperty::Expression;
    rows.toolTip = tr("Number of last rows to calculate average from (useful for tabulated data)");
    rows.receivers = {mAverageRows};
    rows.value = [command =
                      std::weak_ptr<FAttribCmdSetAverageRows>(mAverageRows)](const FObject &) {
        const auto own = command.lock();
        return own ? own->getCurrentValue() : FExprBase();
    };
    rows.set = [this](const FExprBase &given) { return mAverageRows->take(given); };
    mRowsField = new FPropertyEditor(rows, this);
    mRowsField->setToolTip(rows.toolTip);
    row(group, tr("Average"), {mAverage, mRowsField}, "valueAverage", true);
    mAverage->setToolTip(rows.toolTip);
    connect(mAverage, &QCheckBox::clicked, this, &Editor::averageToggled);
}

void FGenIntResultsFileEditor::makePreview(QVBoxLayout *all)
{
    QVBoxLayout *group = addGroup(all, tr("Results Preview"), this);
    mTable = new QTableWidget(this);
    mTable->setObjectName(QStringLiteral("resultsPreview"));
    mTable->setAccessibleName(tr("Results Preview"));
    mTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    mTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    mTable->setMinimumSize(100, 50);
    mTable->setTabKeyNavigation(false);
    mTable->setFrameShape(QFrame::NoFrame);
    connect(mTable, &QTableWidget::cellClicked, this,
            &FGenIntResultsFileEditor::selectValueViaCell);
    connect(mTable->verticalHeader(), &QHeaderView::sectionClicked, this,
            &FGenIntResultsFileEditor::selectValueViaHeader);
    auto *area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(mTable);
    area->setFixedHeight(130);
    area->setFocusPolicy(Qt::NoFocus);
    group->addWidget(area, 1);
    mTells = new QLabel(this);
    mTells->setObjectName(QStringLiteral("doubt"));
    mTells->setWordWrap(true);
    mTells->hide();
    group->addWidget(mTells);
}

QWidget *FGenIntResultsFileEditor::makeSample()
{
    auto *pane = new QFrame(this);
    const bool isSmall = FViewCtrl::instance()->hasSmallScreen();
    auto *all = new QVBoxLayout(pane);
    const int margin = isSmall ? 4 : 8;
    all->setContentsMargins(margin, margin, margin, margin);
    all->setSpacing(isSmall ? 6 : 12);
    QVBoxLayout *group = addGroup(all, tr("File"), this, 1);
    mSource = new QComboBox(this);
    mSource->setObjectName(QStringLiteral("sampleSource"));
    mSource->setAccessibleName(tr("Text that is read"));
    mSource->setToolTip(tr("Try the rules on the stored sample, or on the file of a run"));
    mSource->addItem(tr("Stored sample"));
    mSourceTells = new QLabel(this);
    mSourceTells->setObjectName(QStringLiteral("muted"));
    auto *source = new QHBoxLayout;
    source->setContentsMargins(0, 0, 0, 0);
    source->addWidget(mSource);
    source->addWidget(mSourceTells, 1);
    group->addLayout(source);
    connect(mSource, qOverload<int>(&QComboBox::activated), this,
            [this](int index) { showRun(mSource->itemData(index).toString()); });
    mEdit = new FGenIntResultsFileEdit(this, this);
    mEdit->setLineWrapMode(QPlainTextEdit::NoWrap);
    setEditor(mEdit);
    mEdit->setAccessibleName(tr("Sample of the result file"));
    group->addWidget(mEdit, 1);
    return pane;
}

void FGenIntResultsFileEditor::addBackButton(QWidget *button)
{
    auto *row = new QWidget(this);
    row->setObjectName(QStringLiteral("AttributeRow"));
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(button);
    layout->addStretch(1);
    mGeneral->insertWidget(0, row);
}

void FGenIntResultsFileEditor::refreshLabels()
{
    const int width = QFontMetrics(font()).horizontalAdvance(tr("Regular Expression"));
    for (QLabel *label : mLabels)
        label->setFixedWidth(width);
}

void FGenIntResultsFileEditor::changeEvent(QEvent *event)
{
    FTemplateTab::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        refreshLabels();
}

void FGenIntResultsFileEditor::focusOutEvent(QFocusEvent *event)
{
    if (isBuilt())
        FIni().setValue(kSplitterKey, mSplitter->saveState());
    FTemplateTab::focusOutEvent(event);
}

void FGenIntResultsFileEditor::showEvent(QShowEvent *event)
{
    const bool isFirst = !isLoaded();
    FTemplateTab::showEvent(event);
    refreshRuns();
    if (isFirst) // once more when the text has its place
        QTimer::singleShot(0, this, [this] { highlightCurrentValue(); });
}

void FGenIntResultsFileEditor::refresh()
{
    if (mOwnChange || mRefreshing || !isLoaded())
        return;
    load();
    const QScopedValueRollback<bool> guard(mRefreshing, true);
    const FResultsOutOfDateBlocker noStaleness;
    const auto file = resultsFile();
    const QString path = file ? file->getFileName() : QString();
    const int begin = nameBegin(path);
    const auto show = [](QLineEdit *field, const QString &text) {
        if (field->text() != text && !(field->hasFocus() && field->isModified()))
            field->setText(text);
    };
    show(mName, path.mid(begin));
    show(mPath, path.left(begin));
    const bool numbers = !file || file->getNumberSeparator();
    (numbers ? mFindNumbers : mCustom)->setChecked(true);
    mSpaces->setChecked(file && file->getSpacesAndTabsSeparator());
    mSpacesRow->setVisible(!numbers);
    mRegExpRow->setVisible(!numbers);
    show(mRegExp, file ? file->getRegExprSeparator() : QString());
    refreshValuesSelector();
    refreshResultsPreview();
    enableValue();
    refreshValue();
}

void FGenIntResultsFileEditor::loadText(const QString &text)
{
    if (mRunPath.isEmpty()) {
        showText(text);
        mShown = text;
        mText.reset();
    }
    const QScopedValueRollback<bool> guard(mOwnChange, false);
    if (!mRefreshing)
        QMetaObject::invokeMethod(this, &FGenIntResultsFileEditor::refresh, Qt::DirectConnection);
}

void FGenIntResultsFileEditor::changeFile(const char *text,
                                          const std::function<void(FGenIntResultsFile &)> &change)
{
    const auto file = resultsFile();
    if (!file)
        return;
    FHistoryTransaction step(nullptr, text, true);
    change(*file);
    step.addStep(file);
}

void FGenIntResultsFileEditor::fileNameChanged()
{
    const auto file = resultsFile();
    if (!file || mName->text() == file->getFileName())
        return;
    const QSignalBlocker quiet(mName);
    const QScopedValueRollback<bool> own(mOwnChange, true);
    changeFile(F_TEXT("template name changed"),
               [this](FGenIntResultsFile &one) { one.setFileName(mName->text()); });
    FGenIntWorkbench::instance()->renameTab(file.get());
}

void FGenIntResultsFileEditor::filePathChanged()
{
    const auto file = resultsFile();
    if (!file)
        return;
    const QSignalBlocker quiet(mPath);
    QString folder = mPath->text();
    if (!folder.isEmpty() && !folder.endsWith('/') && !folder.endsWith('\\')) {
        folder += '/';
        mPath->setText(folder);
    }
    mPath->setModified(false);
    if (folder + mName->text() == file->getFileName())
        return;
    const QScopedValueRollback<bool> own(mOwnChange, true);
    changeFile(F_TEXT("template path changed"),
               [&](FGenIntResultsFile &one) { one.setFileName(folder + mName->text()); });
    FGenIntWorkbench::instance()->renameTab(file.get());
}

void FGenIntResultsFileEditor::numberSeparatorChanged(int)
{
    const bool numbers = mFindNumbers->isChecked();
    mSpacesRow->setVisible(!numbers);
    mRegExpRow->setVisible(!numbers);
    changeFile(F_TEXT("change column separator"),
               [numbers](FGenIntResultsFile &file) { file.setNumberSeparator(numbers); });
    highlightCurrentValue();
    refreshResultsPreview();
}

void FGenIntResultsFileEditor::spacesAndTabsSeparatorChanged()
{
    changeFile(F_TEXT("change column separator"), [this](FGenIntResultsFile &file) {
        file.setSpacesAndTabsSeparator(mSpaces->isChecked());
    });
    highlightCurrentValue();
    refreshResultsPreview();
}

void FGenIntResultsFileEditor::regExpSeparatorChanged()
{
    const auto file = resultsFile();
    if (!file || FMarloCtrl::instance()->isBusy() || mRegExp->text() == file->getRegExprSeparator())
        return;
    FStatus set;
    changeFile(F_TEXT("change column separator"),
               [&](FGenIntResultsFile &one) { set = one.setRegExprSeparator(mRegExp->text()); });
    mRegExp->setModified(!set);
    mTells->setText(set ? QString() : Q(set.error.text()));
    mTells->setVisible(!set);
    if (!set)
        return;
    highlightCurrentValue();
    refreshResultsPreview();
}

void FGenIntResultsFileEditor::showPlace(int line, int column, int length)
{
    load();
    showRun(QString());
    FTemplateTab::showPlace(line, column, length);
}
