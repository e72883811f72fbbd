// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTGRAPH_H
#define FGENINTGRAPH_H
#include "fstudy.h"

#include <QByteArray>
#include <QJsonObject>
#include <functional>

class FGenIntComputation;

/// A picture of the open project, from left to right: computations, the files and values that flow
/// between them, and the parameters that feed them.
class FGenIntGraph
{
public:
    enum Kind { Parameter, Computation, File, Value };
    struct Node
    {
        Kind kind = Parameter;
        std::string id;     ///< unique in the picture
        std::string label;  ///< a name
        std::string detail; ///< the value of a parameter, the command line of a computation
        FStudy::State state = FStudy::NotRun; ///< of a computation, for the design that is shown
        std::string reason;                   ///< of its last run, in words
        /// What opens at a double click; of a file or value the result template that reads it, null
        /// if there is none.
        std::shared_ptr<FManaged> object;
        std::shared_ptr<FGenIntComputation> computation; ///< that leaves the file or value
        int layer = 0;                                   ///< from 0, left to right
        double x = 0, y = 0, width = 0, height = 0;      ///< of the box, once it is laid out
    };
    struct Edge
    {
        size_t from, to;     ///< indices of nodes
        std::string label;   ///< the entry that takes it; may be empty
        bool isBack = false; ///< closes a circle
    };

    /// Nodes and edges in the order of the objects; a circle of references does no harm.
    /// \p lastRun gives the last run of this session, null if there was none: one that failed may
    /// have left no record.
    using LastRun = std::function<const FRunRecord *(const std::string &computation,
                                                     const std::string &design)>;
    static FGenIntGraph ofProject(const LastRun &lastRun = nullptr);
    const std::vector<Node> &nodes() const { return mNodes; }
    const std::vector<Edge> &edges() const { return mEdges; }

    struct Size
    {
        double width, height;
    };
    /// Gives each node its layer, the longest way from a start, and its place. Boxes don't overlap,
    /// and only edges that close a circle lead to the left. The unit is that of \p sizeOf.
    void layOut(const std::function<Size(const Node &)> &sizeOf);
    /// The whole picture, with a margin; (0, 0) is its corner.
    Size size() const;

    static const char *kindText(Kind kind);
    /// "not run", "running", "finished", "stale", "ran earlier", "failed".
    static const char *stateText(FStudy::State state);

    /// For Graphviz.
    QByteArray toDot() const;
    /// SVG 1.1 of its own, in light colours, with sizes that are estimated from the letters.
    QByteArray toSvg() const;
    /// {"nodes": [{"id", "kind", "label", "detail"}], "edges": [{"from", "to", "label"}]}; nodes of
    /// computations have "state" and "reason" as well.
    QJsonObject toJson() const;
    /// A line each: what it is, and what feeds it.
    std::string toText() const;

private:
    size_t node(Kind kind, const std::string &id, const std::string &label);
    void addComputation(const std::shared_ptr<FGenIntComputation> &computation,
                        const LastRun &lastRun);
    /// All that \p value is made from, as edges to \p target.
    void addSuppliers(const FExprBase &value, size_t target, const std::string &label);
    void addSupplier(const std::shared_ptr<FObject> &object, size_t target,
                     const std::string &label);
    void addFlow(Kind kind, const std::shared_ptr<FObject> &from, const std::string &file,
                 const std::string &value, size_t target, const std::string &label);
    void connect(size_t from, size_t to, const std::string &label);
    void findLayers();
    void orderLayers(std::vector<std::vector<size_t>> *layers) const;

    std::vector<Node> mNodes;
    std::vector<Edge> mEdges;
    std::map<std::string, size_t> mPlaces;                              // of nodes, by id
    std::set<std::pair<std::pair<size_t, size_t>, std::string>> mKnown; // edges
};
#endif
