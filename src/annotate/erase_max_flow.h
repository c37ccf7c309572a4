#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavrel::erase {

/// Maximum flow through a graph by levels and blocking flows (Dinic), with its minimum cut.
class MaxFlow final
{
public:
    explicit MaxFlow(int nodes);

    /// Adds an edge and its reverse.
    void addEdge(int from, int to, float capacity, float reverseCapacity = 0);
    void reserveEdges(std::size_t count);
    /// Pushes as much as goes from source to sink and returns the sum.
    double run(int source, int sink);
    /// After run(): for each node whether the source still reaches it, which makes the smallest source side of a
    /// minimum cut.
    [[nodiscard]] std::vector<std::uint8_t> sourceSide(int source) const;

private:
    [[nodiscard]] bool findLevels(int source, int sink);
    [[nodiscard]] double pushBlockingFlow(int source, int sink);

    std::vector<int> m_head; ///< per node: its latest edge, -1 for none
    std::vector<int> m_next; ///< per edge: the node's edge before it
    std::vector<int> m_to;
    std::vector<float> m_capacity; ///< what is left; edges 2 i and 2 i + 1 are each other's reverse
    std::vector<int> m_level;
    std::vector<int> m_current;
};

} // namespace tavrel::erase
