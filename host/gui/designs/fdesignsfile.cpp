// SPDX-License-Identifier: Apache-2.0
// The table of designs from and to files.
#include "fcounted.h"
#include "fdesignsmodel.h"
#include "fdesignspage.h"
#include "fdesigntable.h"
#include "fini.h"
#include "flogmsg.h"
#include "fsafefile.h"
#include "fuserfile.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QSortFilterProxyModel>

namespace {
const char *const kFolder = "Designs/tableFolder";
constexpr size_t kToldErrors = 20;

QString filter() { return FDesignsPage::tr("Tables (*.csv *.tsv *.txt);;All files (*)"); }

QString lastFolder() { return FIni().value(QLatin1String(kFolder)).toString(); }

void keepFolder(const QString &path)
{
    FIni().setValue(QLatin1String(kFolder), QFileInfo(path).absolutePath());
}
} // namespace

void FDesignsPage::importTable()
{
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Import designs"), lastFolder(), filter());
    if (path.isEmpty())
        return;
    keepFolder(path);
    importFrom(path);
}

bool FDesignsPage::importFrom(const QString &path)
{
    QFile file(path);
    QString why;
    if (!FUserFile::open(&file, &why, FUserFile::kMostBytes)) {
        tell(tr("Nothing was imported: %1").arg(why));
        return false;
    }
    const auto outcome = FDesignTable::read(file.readAll(), S(path));
    if (outcome.errors.empty()) {
        tell(QString());
        FLogMsg::info(
            "Designs",
            S(tr("%1 from %2")
                  .arg(counted(int(outcome.designs.size()), tr("%1 design"), tr("%1 designs")),
                       QFileInfo(path).fileName())),
            std::string(), nullptr);
        return true;
    }
    for (size_t i = 0; i < outcome.errors.size() && i < kToldErrors; ++i)
        FLogMsg::error("Designs", outcome.errors[i].toString(), std::string(), nullptr);
    const QString first = tr("Nothing was imported: %1").arg(Q(outcome.errors[0].toString()));
    tell(outcome.errors.size() == 1
             ? first
             : tr("%1 (and %2 more, see Messages)").arg(first).arg(outcome.errors.size() - 1));
    return false;
}

void FDesignsPage::exportTable()
{
    QString path = QFileDialog::getSaveFileName(this, tr("Export the table of designs"),
                                                lastFolder() + "/designs.csv", filter());
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += ".csv";
    keepFolder(path);
    exportTo(path);
}

bool FDesignsPage::exportTo(const QString &path)
{
    const char separator = path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive) ? ',' : '\t';
    QStringList cells;
    for (int column = 0; column < mModel->columnCount(); ++column)
        cells << (column == 0
                      ? QStringLiteral("design")
                      : mModel->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    QByteArray text = FDesignTable::line(cells, separator);
    for (int row = 0; row < mModel->rowCount(); ++row) {
        cells.clear();
        for (int column = 0; column < mModel->columnCount(); ++column)
            cells << wholeText(mModel->index(row, column));
        text += FDesignTable::line(cells, separator);
    }
    QString why;
    const bool isWritten = FSafeFile::write(path, text, &why);
    tell(isWritten ? QString() : tr("The table could not be written: %1").arg(why));
    if (isWritten)
        FLogMsg::info("Designs", S(tr("Exported to %1").arg(path)), std::string(), nullptr);
    return isWritten;
}
