#!/usr/bin/env python3
"""Fails when an include in src/ crosses a layer the wrong way, or when the
includes go round in a circle.

The layers, bottom to top (docs/architecture.md):
  base < script < run < desktop, system, net (peers) < products < editor < app
A file may include headers of its own layer and of the layers below it.
resources/ holds only ids and may be included anywhere. The run engine
includes none of the categories: what its rules need of them comes through
RunWorld (run/worldseams.h), which the app fills.

A circle: a module (a header and its source file, e.g. base/settings.h and
base/settings.cpp) that reaches itself again through the modules it includes,
such as a.cpp including b.h while b.cpp includes a.h. Within a layer too, the
includes must form a tree that can be built from the bottom.
"""
import os
import re
import sys

RANK = {"base": 0, "resources": 0, "script": 1, "run": 2,
        "desktop": 3, "system": 3, "net": 3, "products": 4, "editor": 5, "app": 6}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def crossings(src):
    found = []
    for folder, _, files in os.walk(src):
        for name in sorted(files):
            path = os.path.join(folder, name)
            rel = os.path.relpath(path, src).replace(os.sep, "/")
            layer = rel.split("/")[0]
            if layer not in RANK:
                found.append(f"{rel}: folder '{layer}' has no layer")
                continue
            with open(path, encoding="latin-1") as f:
                for number, line in enumerate(f, 1):
                    m = INCLUDE.match(line)
                    if not m:
                        continue
                    target = m.group(1)
                    other = target.split("/")[0]
                    if "/" not in target and layer == "resources":
                        continue  # the resource scripts include each other by name
                    if "/" not in target or other not in RANK:
                        found.append(f"{rel}:{number}: includes \"{target}\", which is in no layer")
                        continue
                    if RANK[other] > RANK[layer]:
                        found.append(f"{rel}:{number}: {layer} includes \"{target}\" of {other}, a layer above it")
    return found


def module_includes(src):
    """Module (path without its extension) -> the modules its header and source include."""
    graph = {}
    for folder, _, files in os.walk(src):
        for name in sorted(files):
            if not name.endswith((".h", ".cpp")):
                continue
            path = os.path.join(folder, name)
            module = os.path.splitext(os.path.relpath(path, src).replace(os.sep, "/"))[0]
            edges = graph.setdefault(module, set())
            with open(path, encoding="latin-1") as f:
                for line in f:
                    m = INCLUDE.match(line)
                    if m and "/" in m.group(1):
                        target = os.path.splitext(m.group(1))[0]
                        if target != module:
                            edges.add(target)
    return graph


def circles(src):
    """Each group of modules that include each other round a circle (Tarjan's
    strongly connected components, without recursion), with one circle
    through it as the example."""
    graph = module_includes(src)
    index, low, on_stack, stack, groups = {}, {}, set(), [], []
    counter = 0
    for root in sorted(graph):
        if root in index:
            continue
        work = [(root, iter(sorted(graph[root])))]
        index[root] = low[root] = counter
        counter += 1
        stack.append(root)
        on_stack.add(root)
        while work:
            node, children = work[-1]
            child = next((c for c in children if c in graph), None)
            if child is not None:
                if child not in index:
                    index[child] = low[child] = counter
                    counter += 1
                    stack.append(child)
                    on_stack.add(child)
                    work.append((child, iter(sorted(graph[child]))))
                elif child in on_stack:
                    low[node] = min(low[node], index[child])
                continue
            work.pop()
            if work:
                low[work[-1][0]] = min(low[work[-1][0]], low[node])
            if low[node] == index[node]:
                group = []
                while True:
                    member = stack.pop()
                    on_stack.discard(member)
                    group.append(member)
                    if member == node:
                        break
                if len(group) > 1:
                    groups.append(sorted(group))
    found = []
    for group in groups:
        members = set(group)
        # One way round: from the first module, always to the smallest next
        # member of the group not yet on the way, until the way closes.
        way = [group[0]]
        while True:
            nexts = sorted(t for t in graph[way[-1]] if t in members)
            back = [t for t in nexts if t in way]
            fresh = [t for t in nexts if t not in way]
            if fresh:
                way.append(fresh[0])
            else:
                way.append(back[0])
                break
        start = way.index(way[-1])
        found.append("circle of includes: " + " -> ".join(way[start:]))
    return found


def main():
    src = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "..", "src")
    found = crossings(src)
    for line in found:
        print(line)
    print(f"{len(found)} include(s) crossing a layer the wrong way")
    round_about = circles(src)
    for line in round_about:
        print(line)
    print(f"{len(round_about)} circle(s) of includes")
    return 1 if found or round_about else 0


if __name__ == "__main__":
    sys.exit(main())
