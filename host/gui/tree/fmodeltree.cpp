// SPDX-License-Identifier: Apache-2.0
#include "fmodeltree.h"

#include "fdesign.h"
#include "fdispatcher.h"
#include "fenum.h"
#include "ficons.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "frunqueue.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QFont>
#include <QIODevice>
#include <QMimeData>
#include <algorithm>

struct FModelTree::Node
{
    Node *parent = nullptr;
    int row = 0;
    std::shared_ptr<FObject> object; // null for headings
    QString title;                   // of headings
    double place = 0;
    std::vector<std::unique_ptr<Node>> children;

    void renumber(size_t from)
    {
        for (size_t i = from; i < children.size(); ++i)
            children[i]->row = int(i);
    }
};

namespace {
constexpr int kStateMilliseconds = 40;
long orderOf(const FObject &object)
{
    const auto *managed = dynamic_cast<const FManaged *>(&object);
    return managed ? managed->order() : 0;
}
} // namespace

FModelTree::FModelTree(QObject *parent)
    : QAbstractItemModel(parent)
    , mRoot(new Node)
{
    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::changed, this, &FModelTree::follow);
    connect(feed, &FChanges::projectChanged, this, [this](unsigned events) {
        if (events & (FChanges::Opened | FChanges::Closed))
            rebuild();
    });
    connect(feed, &FChanges::projectClosing, this, [this] {
        beginResetModel();
        mRoot = std::make_unique<Node>();
        mNodes.clear();
        mClaimed.clear();
        endResetModel();
    });
    mStateTimer.setSingleShot(true);
    mStateTimer.setInterval(kStateMilliseconds);
    connect(&mStateTimer, &QTimer::timeout, this, &FModelTree::tellStates);
    const auto allMayLookDifferent = [this] {
        for (const auto &group : mRoot->children)
            if (!group->children.empty())
                Q_EMIT dataChanged(indexOf(group->children.front().get()),
                                   indexOf(group->children.back().get()));
    };
    connect(feed, &FChanges::designChanged, this, allMayLookDifferent);
    connect(FRunQueue::background(), &FRunQueue::started, this, allMayLookDifferent);
    connect(FRunQueue::background(), &FRunQueue::idle, this, allMayLookDifferent);
    rebuild();
}

FModelTree::~FModelTree() = default;

bool FModelTree::isShown(const FObject &object) const
{
    const auto *managed = dynamic_cast<const FManaged *>(&object);
    return !object.isDestroyed() && (!managed || managed->isListed()) &&
           !FLooks::of(object).isHidden;
}

FModelTree::Objects FModelTree::childrenOf(const FObject &object) const
{
    const auto &children = FLooks::of(object).children;
    if (!children)
        return {};
    Objects found;
    for (const auto &child : children(object))
        if (child && isShown(*child))
            found.push_back(child);
    return found;
}

void FModelTree::rebuild()
{
    beginResetModel();
    mRoot = std::make_unique<Node>();
    mNodes.clear();
    mClaimed.clear();
    endResetModel();
    Objects all;
    for (const auto &object : FObjectManager::instance()->all())
        all.push_back(object);
    add(all);
}

/// Puts objects that came into the project in their places: under what claims them, else under
/// their heading.
void FModelTree::add(const Objects &objects)
{
    for (const auto &object : objects)
        for (const auto &child : childrenOf(*object))
            if (++mClaimed[child.get()] == 1)
                if (Node *free = mNodes.count(child.get()) ? mNodes[child.get()] : nullptr)
                    if (!free->parent->object)
                        remove(free->parent, free->row, free->row);
    std::map<Node *, Objects> byGroup;
    for (const auto &object : objects) {
        const auto *managed = dynamic_cast<const FManaged *>(object.get());
        if (managed && managed->isTreeRow() && isShown(*object) && !mClaimed.count(object.get()) &&
            !mNodes.count(object.get()))
            byGroup[groupOf(*object)].push_back(object);
    }
    for (auto &[group, members] : byGroup) {
        std::sort(members.begin(), members.end(),
                  [](const auto &a, const auto &b) { return orderOf(*a) < orderOf(*b); });
        // Neighbours go in together.
        for (size_t i = 0; i < members.size();) {
            const auto &rows = group->children;
            const auto at = std::upper_bound(rows.begin(), rows.end(), orderOf(*members[i]),
                                             [](long order, const std::unique_ptr<Node> &node) {
                                                 return order < orderOf(*node->object);
                                             });
            const long limit = at == rows.end() ? -1 : orderOf(*(*at)->object);
            size_t end = i + 1;
            while (end < members.size() && (limit < 0 || orderOf(*members[end]) < limit))
                ++end;
            insert(group, int(at - rows.begin()),
                   Objects(members.begin() + long(i), members.begin() + long(end)));
            i = end;
        }
    }
}

FModelTree::Node *FModelTree::groupOf(const FObject &object)
{
    const FClassLook &look = FLooks::of(object);
    int row = 0;
    for (const auto &group : mRoot->children) {
        if (group->title == look.group)
            return group.get();
        if (group->place <= look.place)
            row = group->row + 1;
    }
    auto group = std::make_unique<Node>();
    group->parent = mRoot.get();
    group->title = look.group;
    group->place = look.place;
    Node *made = group.get();
    beginInsertRows({}, row, row);
    mRoot->children.insert(mRoot->children.begin() + row, std::move(group));
    mRoot->renumber(size_t(row));
    endInsertRows();
    return made;
}

std::unique_ptr<FModelTree::Node> FModelTree::makeNode(Node *parent,
                                                       const std::shared_ptr<FObject> &object)
{
    auto node = std::make_unique<Node>();
    node->parent = parent;
    node->object = object;
    mNodes[object.get()] = node.get();
    addBelow(node.get());
    return node;
}

void FModelTree::addBelow(Node *node)
{
    for (const auto &child : childrenOf(*node->object))
        if (!mNodes.count(child.get())) {
            node->children.push_back(makeNode(node, child));
            mClaimed[child.get()] = 1;
        }
    node->renumber(0);
}

void FModelTree::insert(Node *parent, int row, const Objects &objects)
{
    if (objects.empty())
        return;
    beginInsertRows(indexOf(parent), row, row + int(objects.size()) - 1);
    std::vector<std::unique_ptr<Node>> made;
    made.reserve(objects.size());
    for (const auto &object : objects)
        made.push_back(makeNode(parent, object));
    parent->children.insert(parent->children.begin() + row, std::make_move_iterator(made.begin()),
                            std::make_move_iterator(made.end()));
    parent->renumber(size_t(row));
    endInsertRows();
    changedRow(parent);
}

void FModelTree::forget(const Node &node)
{
    for (const auto &child : node.children)
        forget(*child);
    const auto found = mNodes.find(node.object.get());
    if (found != mNodes.end() && found->second == &node)
        mNodes.erase(found);
    if (node.parent && node.parent->object)
        mClaimed.erase(node.object.get());
}

void FModelTree::remove(Node *parent, int first, int last)
{
    beginRemoveRows(indexOf(parent), first, last);
    for (int row = first; row <= last; ++row)
        forget(*parent->children[size_t(row)]);
    parent->children.erase(parent->children.begin() + first, parent->children.begin() + last + 1);
    parent->renumber(size_t(first));
    endRemoveRows();
    if (!parent->object && parent->parent && parent->children.empty())
        remove(parent->parent, parent->row, parent->row);
    else
        changedRow(parent);
}

void FModelTree::sync(Node *node, const Objects &objects)
{
    for (int row = int(node->children.size()) - 1; row >= 0; --row)
        if (std::find(objects.begin(), objects.end(), node->children[size_t(row)]->object) ==
            objects.end())
            remove(node, row, row);
    for (size_t i = 0; i < objects.size(); ++i) {
        if (i < node->children.size() && node->children[i]->object == objects[i])
            continue;
        const auto known = mNodes.find(objects[i].get());
        if (known != mNodes.end())
            remove(known->second->parent, known->second->row, known->second->row);
        insert(node, int(i), {objects[i]});
        mClaimed[objects[i].get()] = 1;
    }
}

/// What claims objects may claim others now; what is claimed no longer goes under its heading.
void FModelTree::followStructure()
{
    std::vector<std::shared_ptr<FObject>> claimers;
    for (const auto &one : mNodes)
        if (FLooks::of(*one.first).children)
            claimers.push_back(one.second->object);
    std::sort(claimers.begin(), claimers.end(),
              [](const auto &a, const auto &b) { return orderOf(*a) < orderOf(*b); });
    Objects before;
    for (const auto &claimer : claimers)
        if (mNodes.count(claimer.get()))
            for (const auto &child : mNodes[claimer.get()]->children)
                before.push_back(child->object);
    for (const auto &claimer : claimers)
        if (mNodes.count(claimer.get()))
            sync(mNodes[claimer.get()], childrenOf(*claimer));
    Objects free;
    for (const auto &object : before)
        if (!mNodes.count(object.get()))
            free.push_back(object);
    add(free);
}

void FModelTree::follow(const QVector<FChange> &changes)
{
    Objects came;
    std::map<Node *, std::vector<int>> gone;
    bool isStructural = false;
    for (const FChange &change : changes) {
        const FObject &object = *change.object;
        const auto known = mNodes.find(&object);
        if (change.what & FChanges::Removed) {
            if (known != mNodes.end())
                gone[known->second->parent].push_back(known->second->row);
        } else if (change.what & (FChanges::Created | FChanges::Revived)) {
            came.push_back(change.object);
        } else if (known != mNodes.end()) {
            if (change.what == FChanges::State)
                mStates.push_back(change.object);
            else
                changedRow(known->second);
        }
        if (change.what != FChanges::State)
            isStructural = isStructural || bool(FLooks::of(object).children) ||
                           mClaimed.count(&object) || FLooks::of(object).isHidden;
    }
    if (!mStates.empty() && !mStateTimer.isActive())
        mStateTimer.start();
    // From the end, neighbours together; the deepest first, so that no parent goes before.
    std::vector<std::pair<int, Node *>> parents;
    for (const auto &one : gone) {
        int depth = 0;
        for (const Node *up = one.first; up; up = up->parent)
            ++depth;
        parents.emplace_back(-depth, one.first);
    }
    std::sort(parents.begin(), parents.end());
    for (const auto &[depth, parent] : parents) {
        std::vector<int> &rows = gone[parent];
        std::sort(rows.begin(), rows.end());
        while (!rows.empty()) {
            const int last = rows.back();
            int first = last;
            rows.pop_back();
            while (!rows.empty() && rows.back() == first - 1) {
                first = rows.back();
                rows.pop_back();
            }
            remove(parent, first, last);
        }
    }
    add(came);
    if (isStructural)
        followStructure();
}

FModelTree::Node *FModelTree::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Node *>(index.internalPointer()) : mRoot.get();
}

QModelIndex FModelTree::indexOf(const Node *node) const
{
    return !node || !node->parent ? QModelIndex()
                                  : createIndex(node->row, 0, const_cast<Node *>(node));
}

/// States change by the thousand when runs end or the head of a chain is edited. They are told a
/// few times a second, and as ranges: a view looks for each row that it is told of.
void FModelTree::tellStates()
{
    std::map<const Node *, std::pair<const Node *, const Node *>> ranges;
    for (const auto &object : mStates) {
        const auto known = mNodes.find(object.get());
        if (known == mNodes.end() || !known->second->parent)
            continue;
        const Node *node = known->second;
        const auto range = ranges.emplace(node->parent, std::pair(node, node)).first;
        if (node->row < range->second.first->row)
            range->second.first = node;
        if (node->row > range->second.second->row)
            range->second.second = node;
    }
    mStates.clear();
    for (const auto &one : ranges)
        Q_EMIT dataChanged(indexOf(one.second.first), indexOf(one.second.second));
}

void FModelTree::changedRow(const Node *node)
{
    if (node->parent)
        Q_EMIT dataChanged(indexOf(node), indexOf(node));
}

std::shared_ptr<FObject> FModelTree::objectAt(const QModelIndex &index) const
{
    return index.isValid() ? nodeAt(index)->object : nullptr;
}

QModelIndex FModelTree::indexOf(const FObject *object) const
{
    const auto found = mNodes.find(object);
    return found == mNodes.end() ? QModelIndex() : indexOf(found->second);
}

QModelIndex FModelTree::index(int row, int column, const QModelIndex &parent) const
{
    const Node *node = nodeAt(parent);
    return column == 0 && row >= 0 && row < int(node->children.size())
               ? createIndex(row, 0, node->children[size_t(row)].get())
               : QModelIndex();
}

QModelIndex FModelTree::parent(const QModelIndex &index) const
{
    return index.isValid() ? indexOf(nodeAt(index)->parent) : QModelIndex();
}

int FModelTree::rowCount(const QModelIndex &parent) const
{
    return int(nodeAt(parent)->children.size());
}

QVariant FModelTree::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node *node = nodeAt(index);
    if (!node->object) {
        switch (role) {
        case Qt::DisplayRole:
            return node->title;
        case Qt::FontRole: {
            QFont font;
            font.setBold(true);
            return font;
        }
        case Qt::DecorationRole:
            return node->children.empty() ? QVariant()
                                          : QVariant(FLooks::icon(*node->children.front()->object));
        case DetailRole:
            return QString::number(node->children.size());
        case IsGroupRole:
            return true;
        default:
            return {};
        }
    }
    const FObject &object = *node->object;
    const FClassLook &look = FLooks::of(object);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return FLooks::nameOf(object);
    case Qt::DecorationRole:
        return FIcons::icon(look.icon);
    case Qt::AccessibleDescriptionRole:
    case Qt::ToolTipRole: {
        QString tip = look.noun + " " + FLooks::nameOf(object);
        if (look.state && !look.state(object).second.isEmpty())
            tip += "\n" + look.state(object).second;
        return tip;
    }
    case DetailRole:
        return look.detail ? look.detail(object) : QString();
    case StateIconRole:
        return look.state ? look.state(object).first : QString();
    case StateTextRole:
        return look.state ? look.state(object).second : QString();
    case IsGroupRole:
        return false;
    default:
        return {};
    }
}

bool FModelTree::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const auto object = objectAt(index);
    if (role != Qt::EditRole || !object || value.toString() == FLooks::nameOf(*object))
        return false;
    return FDispatcher::execute(FExprBase(object), "setName",
                                {FExprBase(f_make_shared<FString>(S(value.toString())))})
        .error.empty();
}

Qt::ItemFlags FModelTree::flags(const QModelIndex &index) const
{
    const auto object = objectAt(index);
    if (!object)
        return Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    if (dynamic_cast<const FManaged *>(object.get()) && object != FDesign::baseline())
        flags |= Qt::ItemIsEditable;
    return flags;
}

QStringList FModelTree::mimeTypes() const
{
    return {FMarloCtrl::instance()->getFObjectMimeType(), QStringLiteral("text/plain")};
}

QMimeData *FModelTree::mimeData(const QModelIndexList &indexes) const
{
    auto *data = new QMimeData;
    QByteArray addresses, ids;
    QDataStream stream(&addresses, QIODevice::WriteOnly), idStream(&ids, QIODevice::WriteOnly);
    idStream << qint64(QCoreApplication::applicationPid());
    QStringList names;
    for (const QModelIndex &index : indexes)
        if (const auto object = objectAt(index)) {
            stream << qint64(reinterpret_cast<quintptr>(object.get()));
            const auto *managed = dynamic_cast<const FManaged *>(object.get());
            idStream << qint64(managed ? managed->getDbId() : 0);
            names << FLooks::nameOf(*object);
        }
    data->setData(FMarloCtrl::instance()->getFObjectMimeType(), addresses);
    data->setData(FMarloCtrl::instance()->getFObjectMimeType() + "-ids", ids);
    data->setText(names.join('\n'));
    return data;
}
