// SPDX-License-Identifier: Apache-2.0
#include "ftabledata.h"

#include "fcmdbinder.h"

#include <algorithm>

F_CLASS_IMPL(FTableData)

void FTableData::setAllVerticalHeaders(std::vector<std::string> headers)
{
    mRowHeaders = std::move(headers);
    mRowIndex.clear();
    for (size_t i = 0; i < mRowHeaders.size(); ++i)
        mRowIndex.emplace(mRowHeaders[i], int(i));
}

void FTableData::setColumns(const std::vector<std::vector<double>> &columns,
                            std::vector<std::string> headers)
{
    mColumnHeaders = std::move(headers);
    mRows.assign(columns.empty() ? 0 : columns.front().size(), {});
    for (size_t row = 0; row < mRows.size(); ++row)
        for (const auto &column : columns)
            mRows[row].push_back(row < column.size() ? column[row] : quietNan());
}

void FTableData::addNote(const std::string &note)
{
    for (FTableRow &value : mValues)
        value.notes.push_back(Q(note));
}

void FTableData::setValues(std::vector<FTableRow> values, const std::vector<size_t> &unfilled)
{
    std::vector<std::vector<double>> rows;
    std::vector<std::string> names, toolTips;
    auto without = unfilled.begin();
    for (size_t i = 0; i < values.size(); ++i) {
        names.push_back(values[i].name);
        if (without != unfilled.end() && *without == i) {
            ++without;
            continue;
        }
        rows.push_back({values[i].value});
        toolTips.push_back(values[i].toolTip());
    }
    setData(std::move(rows));
    setAllVerticalHeaders(std::move(names));
    setAllVerticalHeadersTooltips(std::move(toolTips));
    mValues = std::move(values);
}

int FTableData::columnCount() const
{
    size_t count = 0;
    for (const auto &row : mRows)
        count = std::max(count, row.size());
    return int(count);
}

int FTableData::find(const std::vector<std::string> &headers, const std::string &header)
{
    const auto exact = std::find(headers.begin(), headers.end(), header);
    if (exact != headers.end())
        return int(exact - headers.begin());
    for (size_t i = 0; i < headers.size(); ++i)
        if (equals(headers[i], header, false))
            return int(i);
    return -1;
}

int FTableData::findRow(const std::string &header) const
{
    const auto at = mRowIndex.find(header);
    return at != mRowIndex.end() ? at->second : find(mRowHeaders, header);
}

double FTableData::getElementAt(int row, int column, bool *ok) const
{
    const bool there = row >= 0 && size_t(row) < mRows.size() && column >= 0 &&
                       size_t(column) < mRows[size_t(row)].size();
    if (ok)
        *ok = there;
    return there ? mRows[size_t(row)][size_t(column)] : quietNan();
}

double FTableData::getElementAt(const std::string &rowHeader, int column) const
{
    return getElementAt(findRow(rowHeader), column);
}

double FTableData::getElementAt(int row, const std::string &columnHeader) const
{
    return getElementAt(row, find(mColumnHeaders, columnHeader));
}

double FTableData::getElementAt(const std::string &rowHeader, const std::string &columnHeader) const
{
    return getElementAt(findRow(rowHeader), find(mColumnHeaders, columnHeader));
}

double FTableData::getLastElementOfRow(int row) const
{
    return row >= 0 && size_t(row) < mRows.size() && !mRows[size_t(row)].empty()
               ? mRows[size_t(row)].back()
               : quietNan();
}

double FTableData::getLastElementOfColumn(int column) const
{
    return getElementAt(rowCount() - 1, column);
}

double FTableData::getAverageOfLastRows(int numberOfRows, int column) const
{
    double sum = 0;
    int count = 0;
    for (int row = rowCount() - 1; row >= 0 && count < numberOfRows; --row, ++count)
        sum += getElementAt(row, column);
    return count ? sum / count : quietNan();
}

void FTableData::initCmds()
{
    using T = FTableData;
    FCmdBinder<T> c;
    c.member("getElementAt", &T::cell, FArg{"row"}, FArg{"column", 0});
    c.member("getElementAt",
             static_cast<double (T::*)(const std::string &, int) const>(&T::getElementAt),
             FArg{"row header"}, FArg{"column", 0});
    c.member("getElementAt",
             static_cast<double (T::*)(int, const std::string &) const>(&T::getElementAt),
             FArg{"row"}, FArg{"column header"});
    c.member("getElementAt",
             static_cast<double (T::*)(const std::string &, const std::string &) const>(
                 &T::getElementAt),
             FArg{"row header"}, FArg{"column header"});
    c.member("getLastElementOfRow", &T::getLastElementOfRow, FArg{"row", 0});
    c.member("getLastElementOfColumn", &T::getLastElementOfColumn, FArg{"column", 0});
    c.member("getAverageOfLastRows", &T::getAverageOfLastRows, FArg{"numberOfRows"},
             FArg{"column", 0});
    c.member("rowCount", &T::rowCount);
    c.member("columnCount", &T::columnCount);
}
