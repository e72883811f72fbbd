// SPDX-License-Identifier: Apache-2.0
#ifndef FTABLEDATA_H
#define FTABLEDATA_H
#include "fexpr.h"
#include "ftablerow.h"

#include <unordered_map>

/// A table of numbers with headers. Counts of rows, headers and tooltips may differ. Indices count
/// from 0; what is out of range, or under an unknown header, is NaN.
class FTableData : public FObject
{
    F_CLASS(FTableData, FObject)
public:
    explicit FTableData(std::string name = std::string())
        : mName(std::move(name))
    {
    }
    const std::string &getName() const { return mName; }

    /// Rows of cells.
    void setData(std::vector<std::vector<double>> rows) { mRows = std::move(rows); }
    void setAllVerticalHeaders(std::vector<std::string> headers);
    void setAllVerticalHeadersTooltips(std::vector<std::string> texts)
    {
        mRowTexts = std::move(texts);
    }
    /// Columns of equal length with their names.
    void setColumns(const std::vector<std::vector<double>> &columns,
                    std::vector<std::string> headers);
    const std::vector<std::vector<double>> &rows() const { return mRows; }
    const std::vector<std::string> &rowHeaders() const { return mRowHeaders; }
    const std::vector<std::string> &rowTexts() const { return mRowTexts; }
    const std::vector<std::string> &columnHeaders() const { return mColumnHeaders; }

    /// What a read gave: \p values by name, with place and doubt. They fill the table, one row
    /// each. \p unfilled are indices, rising, of values whose name alone comes into the table: from
    /// there on its names are ahead of its numbers, which values() are not.
    void setValues(std::vector<FTableRow> values, const std::vector<size_t> &unfilled = {});
    /// Why nothing could be read: \p values without numbers. The table stays as it was.
    void setMissing(std::vector<FTableRow> values) { mValues = std::move(values); }
    /// Of the last read; empty for a table that was filled otherwise.
    const std::vector<FTableRow> &values() const { return mValues; }
    /// Adds a doubt to every value.
    void addNote(const std::string &note);

    double getElementAt(int row, int column, bool *ok = nullptr) const;
    double getElementAt(const std::string &rowHeader, int column) const;
    double getElementAt(int row, const std::string &columnHeader) const;
    double getElementAt(const std::string &rowHeader, const std::string &columnHeader) const;
    double getLastElementOfRow(int row) const;
    double getLastElementOfColumn(int column) const;
    double getAverageOfLastRows(int numberOfRows, int column) const;
    int rowCount() const { return int(mRows.size()); }
    int columnCount() const;

    static void initCmds();

private:
    static int find(const std::vector<std::string> &headers, const std::string &header);
    int findRow(const std::string &header) const;
    double cell(int row, int column) const { return getElementAt(row, column, nullptr); }

    std::string mName;
    std::vector<std::vector<double>> mRows;
    std::vector<std::string> mRowHeaders, mRowTexts, mColumnHeaders;
    std::vector<FTableRow> mValues;
    std::unordered_map<std::string, int> mRowIndex;
};
#endif
