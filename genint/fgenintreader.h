// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTREADER_H
#define FGENINTREADER_H
#include "fgenintreadercore.h"
#include "fgenintresultsfile.h"
#include "fresults.h"

class FGenIntText;

/// Reads the values of a result template out of one ASCII result file.
///
/// One reader per read, on the stack; not thread-safe.
class FGenIntReader
{
public:
    using Imports = std::unordered_map<std::string, FExpr<FObject>>;

    /// Fills \p table with one row per value, in reading order, one column. An empty \p directory
    /// reads the stored sample. A value that cannot be read is NaN; an unreadable or empty text is
    /// logged and leaves \p table as it was. Each row carries where its number was read, and a note
    /// when there is doubt.
    void read(const FExpr<FGenIntResultsFile> &file, const std::shared_ptr<FTableData> &table,
              const QString &directory);
    /// The same into a new table of \p results, named with the template's file name.
    void read(const FExpr<FGenIntResultsFile> &file, const FExpr<FResultsGeneric> &results,
              const QString &directory);
    /// Reads a file that is given by its own path.
    void readFile(const FExpr<FGenIntResultsFile> &file, const std::shared_ptr<FTableData> &table,
                  const QString &path, const QString &directory);
    /// Fills \p table with what was read out of the sample elsewhere, by the rules of the template
    /// in their order.
    void take(const FExpr<FGenIntResultsFile> &file, const std::shared_ptr<FTableData> &table,
              const QVector<FGenIntReading> &readings);
    /// False: rows carry no place, and a long file need not be read from the top for the line
    /// numbers.
    void setTellPlaces(bool tell) { mTellPlaces = tell; }
    /// Objects out of files that values point to; of the last read only.
    const Imports &importedObjects() const { return mImportedObjects; }

    /// Place of the value's anchor, ignoring case; -1 if it has none or it isn't there.
    static int getAnchorPos(const std::shared_ptr<FGenIntResultsFileValue> &value,
                            const QString &text);
    static void parseLine(int &position, int &length, QRegExp &separator, int line,
                          const QString &anchor, const QString &text, int column, bool numberMode)
    {
        FGenIntReaderCore::parseLine(position, length, separator, line, anchor, text, column,
                                     numberMode);
    }
    /// Brings values into reading order; what is no value is dropped.
    static void sortResultsValues(std::vector<FExpr<FObject, true>> &values, const QString &text);
    static bool sortValueNames(const FExpr<FObject> &a, const FExpr<FObject> &b);
    static FGenIntRule ruleOf(const FGenIntResultsFileValue &value);
    static FGenIntColumns columnsOf(const FGenIntResultsFile &file);

private:
    void fill(const FGenIntResultsFile &file, const std::shared_ptr<FTableData> &table,
              const FGenIntText &text, const QString &path, const QString &directory);
    void fill(const FGenIntResultsFile &file, const std::shared_ptr<FTableData> &table,
              const QVector<FGenIntReading> &readings, const QString &path,
              const QString &directory);
    bool import(const FGenIntResultsFileValue &value, const QString &cell,
                const QString &directory);
    Imports mImportedObjects;
    bool mTellPlaces = true;
};
#endif
