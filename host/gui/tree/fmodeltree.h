// SPDX-License-Identifier: Apache-2.0
#ifndef FMODELTREE_H
#define FMODELTREE_H
#include "fchanges.h"
#include "flooks.h"

#include <QAbstractItemModel>
#include <QTimer>
#include <memory>
#include <unordered_map>

/// The objects of the project as a tree: headings, below them the objects in the order of the
/// project, below each what belongs to it. Column 0 is the name, column 1 a value.
///
/// Kept in step by the change feed alone, row by row; values and states are asked for when a row is
/// painted.
class FModelTree : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Role { ObjectRole = Qt::UserRole, IsGroupRole, StateIconRole, StateTextRole, DetailRole };
    explicit FModelTree(QObject *parent = nullptr);
    ~FModelTree() override;

    /// The object of a row; null for a heading.
    std::shared_ptr<FObject> objectAt(const QModelIndex &index) const;
    /// The row of an object; invalid if it isn't shown.
    QModelIndex indexOf(const FObject *object) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex & = {}) const override { return 1; }
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;

private:
    struct Node;
    using Objects = FClassLook::Objects;
    void rebuild();
    void follow(const QVector<FChange> &changes);
    void followStructure();
    /// Makes the rows below \p node those of \p objects, row by row.
    void sync(Node *node, const Objects &objects);
    Objects childrenOf(const FObject &object) const;
    bool isShown(const FObject &object) const;
    Node *groupOf(const FObject &object);
    void insert(Node *parent, int row, const Objects &objects);
    void remove(Node *parent, int first, int last);
    void add(const Objects &objects);
    void forget(const Node &node);
    std::unique_ptr<Node> makeNode(Node *parent, const std::shared_ptr<FObject> &object);
    void addBelow(Node *node);
    Node *nodeAt(const QModelIndex &index) const;
    QModelIndex indexOf(const Node *node) const;
    void changedRow(const Node *node);
    void tellStates();

    std::unique_ptr<Node> mRoot;
    std::unordered_map<const FObject *, Node *> mNodes;
    std::unordered_map<const FObject *, int> mClaimed; // shown below another object
    Objects mStates;                                   // whose state is still to be told
    QTimer mStateTimer;
};
#endif
