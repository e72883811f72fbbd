// SPDX-License-Identifier: Apache-2.0
#ifndef FDESIGNSMODEL_H
#define FDESIGNSMODEL_H
#include "fchanges.h"
#include "fdesign.h"
#include "fexterncomputation.h"
#include "frunqueue.h"
#include "ftablerow.h"

#include <QAbstractTableModel>
#include <QTimer>
#include <memory>
#include <optional>
#include <unordered_map>

/// Designs against their variables, the states of the computations and the parameters that depend
/// on results. Reads the model; what it keeps is what was evaluated for a row, until the feed or a
/// run says that it may be another one.
class FDesignsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Kind { Name, Variable, State, Output };
    enum Role { SortRole = Qt::UserRole, ReasonRole, IsDoubtfulRole, IsMutedRole };
    explicit FDesignsModel(QObject *parent = nullptr);
    ~FDesignsModel() override;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    Kind kind(int column) const;
    const std::shared_ptr<FDesign> &design(int row) const { return mDesigns[size_t(row)]; }
    /// The parameter or the computation of a column; null for the name.
    const std::shared_ptr<FManaged> &object(int column) const { return mColumns[size_t(column)]; }
    int rowOf(const std::string &design) const;
    /// Why the last setData failed.
    const QString &reason() const { return mReason; }
    /// The script that gives a variable of a design a value; without a text its own one.
    QString assignment(const QString &design, int column, const QString &text) const;
    /// Where the value of an output was read in the run of the design; no line if it isn't known.
    FTableRow::Place place(int row, int column) const;
    /// Designs whose computations have all run, and those of which one failed, in this session.
    std::pair<int, int> finishedAndFailed() const;

Q_SIGNALS:
    void countsChanged();

private:
    struct Cell
    {
        QString text, reason, icon;
        double number = 0;
        bool isNumber = false, isMuted = false, isDoubtful = false;
        FTableRow::Place place;
    };
    struct Row
    {
        std::vector<Cell> cells; // by column; empty until they are asked for
    };
    using Objects = std::vector<std::shared_ptr<FManaged>>;
    void follow(const QVector<FChange> &changes);
    void restructure();
    void syncRows(const std::vector<std::shared_ptr<FDesign>> &designs);
    void syncColumns(const Objects &columns, size_t variables, size_t states);
    void forgetAll();
    void forgetRow(int row);
    const Cell &cell(int row, int column) const;
    void evaluate(int row) const;
    Cell stateCell(const FExternComputation &computation, const FDesign &design) const;
    Cell variableCell(const FParameter &parameter, const FDesign &design) const;

    std::vector<std::shared_ptr<FDesign>> mDesigns;
    Objects mColumns; // null for the name first
    size_t mVariables = 0, mStates = 0;
    mutable std::vector<Row> mRows;
    mutable std::map<std::pair<std::string, std::string>, FRunQueue::Item> mItems;
    mutable bool mItemsKnown = false;
    QString mReason;
    QTimer mTell;
};
#endif
