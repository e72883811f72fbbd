// SPDX-License-Identifier: Apache-2.0
#include "fsoftcondialogs.h"

#include "fbasictype.h"
#include "fini.h"
#include "fselectionset.h"
#include "fsoftconscene.h"

#include <QCheckBox>
#include <QDir>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QTreeView>
#include <QTreeWidgetItem>
#include <QVBoxLayout>

FSoftConDialog::FSoftConDialog(QWidget *parent, const QString &caption, const QString &directory)
    : QFileDialog(parent, caption, directory, QString())
{
    setOption(DontUseNativeDialog);
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    setFileMode(ExistingFiles);
    if (const auto *list = findChild<QListView *>(QStringLiteral("listView")))
        connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &FSoftConDialog::updateLineEdit);
    if (const QLineEdit *edit = lineEdit())
        connect(edit, &QLineEdit::textChanged, this, &FSoftConDialog::lineEditChanged);
    setLabelText(Accept, tr("Add"));
}

QLineEdit *FSoftConDialog::lineEdit() const { return findChild<QLineEdit *>(); }

bool FSoftConDialog::existSelection() const
{
    const QStringList files = selectedFiles();
    return std::any_of(files.begin(), files.end(),
                       [](const QString &file) { return QFile::exists(file); });
}

void FSoftConDialog::accept()
{
    const QStringList files = selectedFiles();
    if (files.isEmpty())
        return;
    Q_EMIT filesSelected(files);
    QDialog::accept(); // of the file dialog it would enter a folder and refuse a new name
}

namespace {
QStringList textsOf(const QItemSelection &selection)
{
    QStringList texts;
    for (const QModelIndex &index : selection.indexes())
        if (index.column() == 0)
            texts.append(index.data().toString());
    return texts;
}
} // namespace

void FSoftConDialog::updateLineEdit(const QItemSelection &selected,
                                    const QItemSelection &deselected)
{
    static const QRegularExpression separator(QStringLiteral("/|\\\\"));
    QLineEdit *edit = lineEdit();
    if ((selected.isEmpty() && deselected.isEmpty()) || !edit)
        return;
    const QStringList removed = textsOf(deselected);
    QStringList names;
    for (const QString &path : selectedFiles()) {
        const QString name = path.mid(path.lastIndexOf(separator) + 1);
        if (!removed.contains(name) && !names.contains(name))
            names.append(name);
    }
    for (const QString &name : textsOf(selected))
        if (!names.contains(name))
            names.append(name);
    const QString quote = names.size() < 2 ? QString() : QStringLiteral("\"");
    const QSignalBlocker blocker(edit);
    edit->setText(names.isEmpty() ? QString() : quote + names.join(quote + ' ' + quote) + quote);
}

void FSoftConResultFilesDialog::lineEditChanged(const QString &text)
{
    const QList<QPushButton *> buttons = findChildren<QPushButton *>();
    const auto isAdd = [](const QPushButton *button) {
        return button->text() == tr("Add") || button->text() == tr("Add New");
    };
    const auto add = std::find_if(buttons.begin(), buttons.end(), isAdd);
    if (add == buttons.end())
        return;
    (*add)->setText(existSelection() ? tr("Add") : tr("Add New"));
    (*add)->setEnabled(!text.isEmpty());
}

FSoftConInputDialog::FSoftConInputDialog(QWidget *parent, const QString &caption,
                                         const QString &directory, bool convertToTemplate)
    : FSoftConResultFilesDialog(parent, caption, directory)
    , mConvertCheckBox(new QCheckBox(this))
{
    const QVariant saved = FIni().value(QStringLiteral("SoftwareConnector/convertToTemplate"));
    mConvertCheckBox->setChecked(saved.isValid() ? saved.toBool() : convertToTemplate);
    mConvertCheckBox->setObjectName(QStringLiteral("convertToTemplate"));
    const QString tip =
        tr("If checked all added files will be converted to input templates immediately.");
    mConvertCheckBox->setToolTip(tip);
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        auto *label = new QLabel(tr("Convert to Template"), this);
        label->setToolTip(tip);
        label->setBuddy(mConvertCheckBox);
        mConvertCheckBox->setAccessibleName(label->text());
        grid->addWidget(label, 4, 0);
        grid->addWidget(mConvertCheckBox, 4, 1);
    }
}

void FSoftConInputDialog::accept()
{
    if (!existSelection())
        mAddNew = true;
    FSoftConResultFilesDialog::accept();
}

FSoftConItemRequestDialog::FSoftConItemRequestDialog(QWidget *parent, const QStringList &files)
    : QDialog(parent)
    , mFiles(files)
{
    init();
}

void FSoftConItemRequestDialog::init()
{
    auto *column = new QVBoxLayout(this);
    auto *tree = new QTreeView(this);
    tree->setAttribute(Qt::WA_NativeWindow);
    auto *model = new QFileSystemModel(tree);
    tree->setModel(model);
    if (!mFiles.isEmpty()) {
        const QString folder = QFileInfo(mFiles.first()).absolutePath();
        model->setRootPath(folder);
        tree->setRootIndex(model->index(folder));
    }
    column->addWidget(tree);
}

void FSoftConItemRequestDialog::buildTree(QTreeWidgetItem *parent, const QList<QFileInfo> &infos)
{
    for (const QFileInfo &info : infos) {
        auto *item = new QTreeWidgetItem(parent, {info.fileName()});
        if (info.isDir() && !info.isSymLink()) // a link may lead up again
            buildTree(item, QDir(info.filePath())
                                .entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
                                               QDir::Unsorted));
    }
}

FSoftConAddExportDialog::FSoftConAddExportDialog(QWidget *parent, FSoftConScene *scene)
    : QDialog(parent)
    , mScene(scene)
{
    init();
}

void FSoftConAddExportDialog::init()
{
    setModal(false);
    setWindowTitle(tr("Add Export"));
    auto *column = new QVBoxLayout(this);
    auto *box = new QGroupBox(QString(), this);
    auto *grid = new QGridLayout(box);
    grid->setSpacing(20);
    grid->setColumnStretch(0, 1);
    auto *title = new QLabel(tr("<h4>Export geometry from the model</h4>"), box);
    title->setTextFormat(Qt::RichText);
    grid->addWidget(title, 0, 0, 1, 2);
    auto *help = new QLabel(
        tr("Please select all geometric entities from the ObejctTree you intend to export and "
           "press \"Create Export Geometry Item\". (As an alternative you could skip this dialog "
           "and simply drag & drop your selection onto the Geometry Export area.)"),
        box);
    help->setWordWrap(true);
    grid->addWidget(help, 1, 0);
    auto *create = new QPushButton(tr("Create Export Geometry Item"), box);
    connect(create, &QPushButton::clicked, this, &FSoftConAddExportDialog::addGeometry);
    grid->addWidget(create, 1, 1, Qt::AlignBottom);
    column->addWidget(box, 0, Qt::AlignTop);
    column->addWidget(new QWidget(this), 1);
    auto *cancel = new QPushButton(tr("Cancel"), this);
    connect(cancel, &QPushButton::clicked, this, &FSoftConAddExportDialog::reject);
    column->addWidget(cancel, 0, Qt::AlignBottom | Qt::AlignRight);
}

void FSoftConAddExportDialog::addGeometry()
{
    if (const auto *scene = qobject_cast<FSoftConScene *>(mScene.data())) {
        const auto list = f_make_shared<FObjectList>();
        for (const auto &object : FSelectionSet::instance()->getObjects())
            list->append(object);
        scene->createItem(nullptr, FExpr<FObject>(list), std::string(), std::string());
    }
    accept();
}
