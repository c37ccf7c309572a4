#include "annotate/erase_max_flow.h"

#include <algorithm>

namespace tavrel::erase {
namespace {

/// Less than this is rounding.
constexpr float kLeast = 0.0001F;
constexpr float kUnlimited = 1e30F;

std::size_t at(int i)
{
    return static_cast<std::size_t>(i);
}

} // namespace

MaxFlow::MaxFlow(int nodes) : m_head(at(nodes), -1) {}

void MaxFlow::reserveEdges(std::size_t count)
{
    m_next.reserve(2 * count);
    m_to.reserve(2 * count);
    m_capacity.reserve(2 * count);
}

void MaxFlow::addEdge(int from, int to, float capacity, float reverseCapacity)
{
    const auto add = [this](int a, int b, float amount) {
        m_next.push_back(m_head[at(a)]);
        m_head[at(a)] = static_cast<int>(m_to.size());
        m_to.push_back(b);
        m_capacity.push_back(amount);
    };
    add(from, to, capacity);
    add(to, from, reverseCapacity);
}

double MaxFlow::run(int source, int sink)
{
    double flow = 0;
    while (findLevels(source, sink)) {
        m_current = m_head;
        flow += pushBlockingFlow(source, sink);
    }
    return flow;
}

bool MaxFlow::findLevels(int source, int sink)
{
    m_level.assign(m_head.size(), -1);
    m_level[at(source)] = 0;
    std::vector<int> queue{source};
    for (std::size_t i = 0; i < queue.size(); ++i) {
        const int node = queue[i];
        // Nodes as far as the sink cannot lie on a shortest path.
        if (m_level[at(sink)] >= 0 && m_level[at(node)] >= m_level[at(sink)])
            break;
        for (int edge = m_head[at(node)]; edge >= 0; edge = m_next[at(edge)]) {
            const int next = m_to[at(edge)];
            if (m_capacity[at(edge)] > kLeast && m_level[at(next)] < 0) {
                m_level[at(next)] = m_level[at(node)] + 1;
                queue.push_back(next);
            }
        }
    }
    return m_level[at(sink)] >= 0;
}

double MaxFlow::pushBlockingFlow(int source, int sink)
{
    double flow = 0;
    std::vector<int> path; // of edges
    int node = source;
    for (;;) {
        if (node == sink) {
            float amount = kUnlimited;
            for (const int edge : path)
                amount = std::min(amount, m_capacity[at(edge)]);
            std::size_t keep = path.size();
            for (std::size_t i = path.size(); i-- > 0;) {
                m_capacity[at(path[i])] -= amount;
                m_capacity[at(path[i] ^ 1)] += amount;
                if (m_capacity[at(path[i])] <= kLeast)
                    keep = i;
            }
            flow += static_cast<double>(amount);
            // On from the first edge that is now full.
            node = m_to[at(path[keep] ^ 1)];
            path.resize(keep);
            continue;
        }
        int &edge = m_current[at(node)];
        while (edge >= 0 && !(m_capacity[at(edge)] > kLeast && m_level[at(m_to[at(edge)])] == m_level[at(node)] + 1))
            edge = m_next[at(edge)];
        if (edge >= 0) {
            path.push_back(edge);
            node = m_to[at(edge)];
            continue;
        }
        if (path.empty())
            return flow;
        node = m_to[at(path.back() ^ 1)];
        path.pop_back();
        m_current[at(node)] = m_next[at(m_current[at(node)])];
    }
}

std::vector<std::uint8_t> MaxFlow::sourceSide(int source) const
{
    std::vector<std::uint8_t> reached(m_head.size(), 0);
    reached[at(source)] = 1;
    std::vector<int> stack{source};
    while (!stack.empty()) {
        const int node = stack.back();
        stack.pop_back();
        for (int edge = m_head[at(node)]; edge >= 0; edge = m_next[at(edge)]) {
            const int next = m_to[at(edge)];
            if (m_capacity[at(edge)] > kLeast && !reached[at(next)]) {
                reached[at(next)] = 1;
                stack.push_back(next);
            }
        }
    }
    return reached;
}

} // namespace tavrel::erase
