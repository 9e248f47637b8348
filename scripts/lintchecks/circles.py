"""Cycles in graphs of files and folders."""


def circles(edges):
    """Yields strongly connected components of more than one node. Searches from every node: the graphs are small."""
    reached = {node: _reachable(edges, node) for node in edges}
    left = set(edges)
    while left:
        node = left.pop()
        circle = {other for other in reached[node] if node in reached.get(other, ())} - {node}
        if circle:
            left -= circle
            yield circle | {node}


def _reachable(edges, start):
    found, open_nodes = set(), [start]
    while open_nodes:
        for node in edges.get(open_nodes.pop(), ()):
            if node not in found:
                found.add(node)
                open_nodes.append(node)
    return found
