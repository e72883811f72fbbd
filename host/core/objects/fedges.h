// SPDX-License-Identifier: Apache-2.0
#ifndef FEDGES_H
#define FEDGES_H
#include <QHash>
#include <vector>

class FObject;

/// One side of the dependency graph: the neighbours of an object, each with the number of
/// references that make it one, in the order in which they came.
class FEdges
{
public:
    void add(FObject *object)
    {
        const int at = find(object);
        if (at >= 0) {
            ++mEdges[size_t(at)].count;
            return;
        }
        if (mEdges.size() == kIndexFrom)
            for (size_t i = 0; i < mEdges.size(); ++i)
                mIndex.insert(mEdges[i].object, int(i));
        if (mEdges.size() >= kIndexFrom)
            mIndex.insert(object, int(mEdges.size()));
        mEdges.push_back({object, 1});
    }
    /// Takes one reference away; with \p all every one.
    void remove(FObject *object, bool all = false)
    {
        const int at = find(object);
        if (at < 0 || (--mEdges[size_t(at)].count > 0 && !all))
            return;
        if (!mIndex.isEmpty() && mEdges.size() > kIndexFrom) {
            mIndex.remove(object);
            mEdges[size_t(at)].object = nullptr;
            if (++mHoles * 2 > mEdges.size())
                compact();
            return;
        }
        mEdges.erase(mEdges.begin() + at);
        mIndex.clear();
    }
    bool contains(FObject *object) const { return find(object) >= 0; }
    bool isEmpty() const { return mEdges.size() == mHoles; }
    /// A copy, so that the graph may change during the walk.
    std::vector<FObject *> objects() const
    {
        std::vector<FObject *> all;
        all.reserve(mEdges.size());
        for (const Edge &edge : mEdges)
            if (edge.object)
                all.push_back(edge.object);
        return all;
    }
    template <class F>
    void forEach(F function) const
    {
        for (size_t i = 0; i < mEdges.size(); ++i)
            if (mEdges[i].object)
                function(mEdges[i].object);
    }

private:
    struct Edge
    {
        FObject *object;
        int count;
    };
    static constexpr size_t kIndexFrom = 16; // shorter lists are searched in place

    int find(FObject *object) const
    {
        if (!mIndex.isEmpty())
            return mIndex.value(object, -1);
        for (size_t i = 0; i < mEdges.size(); ++i)
            if (mEdges[i].object == object)
                return int(i);
        return -1;
    }
    void compact()
    {
        std::vector<Edge> kept;
        for (const Edge &edge : mEdges)
            if (edge.object)
                kept.push_back(edge);
        mEdges.swap(kept);
        mHoles = 0;
        mIndex.clear();
        if (mEdges.size() > kIndexFrom)
            for (size_t i = 0; i < mEdges.size(); ++i)
                mIndex.insert(mEdges[i].object, int(i));
    }

    std::vector<Edge> mEdges;
    QHash<FObject *, int> mIndex; // empty while the list is short
    size_t mHoles = 0;
};
#endif
