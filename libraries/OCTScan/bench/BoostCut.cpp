#include "BoostCut.h"

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/boykov_kolmogorov_max_flow.hpp>
#include <boost/graph/push_relabel_max_flow.hpp>

#include <chrono>

namespace kelp::oct::bench {

namespace {

using Traits = boost::adjacency_list_traits<boost::vecS, boost::vecS, boost::directedS>;
using VertexProperties = boost::property<
    boost::vertex_color_t, boost::default_color_type,
    boost::property<boost::vertex_distance_t, long,
                    boost::property<boost::vertex_predecessor_t, Traits::edge_descriptor>>>;
using EdgeProperties = boost::property<
    boost::edge_capacity_t, long long,
    boost::property<boost::edge_residual_capacity_t, long long,
                    boost::property<boost::edge_reverse_t, Traits::edge_descriptor>>>;
using Graph = boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS, VertexProperties,
                                    EdgeProperties>;

void addEdge(Graph& network, std::size_t from, std::size_t to, long long capacity,
             long long reverseCapacity)
{
    const auto forward = boost::add_edge(from, to, network).first;
    const auto backward = boost::add_edge(to, from, network).first;
    boost::put(boost::edge_capacity, network, forward, capacity);
    boost::put(boost::edge_capacity, network, backward, reverseCapacity);
    boost::put(boost::edge_reverse, network, forward, backward);
    boost::put(boost::edge_reverse, network, backward, forward);
}

/// The nodes that can reach the sink over residual edges.
std::vector<signed char> findSinkSide(Graph& network, std::size_t sink)
{
    const auto residual = boost::get(boost::edge_residual_capacity, network);
    const auto reverse = boost::get(boost::edge_reverse, network);
    std::vector<signed char> reached(boost::num_vertices(network), 0);
    std::vector<std::size_t> front{sink};
    reached[sink] = 1;
    while (!front.empty()) {
        const std::size_t node = front.back();
        front.pop_back();
        for (auto [edge, end] = boost::out_edges(node, network); edge != end; ++edge) {
            const std::size_t other = boost::target(*edge, network);
            if (!reached[other] && boost::get(residual, boost::get(reverse, *edge)) > 0) {
                reached[other] = 1;
                front.push_back(other);
            }
        }
    }
    return reached;
}

} // namespace

BoostCut solveWithBoost(const QpboGraph<int>& graph, BoostMethod method)
{
    const auto nodes = static_cast<std::size_t>(graph.GetNodeNum());
    const std::size_t source = nodes;
    const std::size_t sink = nodes + 1;
    Graph network(nodes + 2);
    graph.forEachNode([&](int i, long long capacity) {
        if (capacity > 0) {
            addEdge(network, source, static_cast<std::size_t>(i), capacity, 0);
        } else if (capacity < 0) {
            addEdge(network, static_cast<std::size_t>(i), sink, -capacity, 0);
        }
    });
    graph.forEachEdge([&](int i, int j, long long capacity, long long reverseCapacity) {
        addEdge(network, static_cast<std::size_t>(i), static_cast<std::size_t>(j), capacity,
                reverseCapacity);
    });

    BoostCut cut;
    const auto start = std::chrono::steady_clock::now();
    cut.flow = method == BoostMethod::BoykovKolmogorov
                   ? boost::boykov_kolmogorov_max_flow(network, source, sink)
                   : boost::push_relabel_max_flow(network, source, sink);
    cut.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    cut.labels = findSinkSide(network, sink);
    cut.labels.resize(nodes);
    return cut;
}

} // namespace kelp::oct::bench
