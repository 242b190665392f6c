// The table that the benchmarks share: each prints its own rows among its figures.
#pragma once

#include <cstdio>

/// One row: what was measured, its figure, the bound or peer measured or given in the same run, the
/// ratio of the two, and what it should be. Rows begin with "| ", by which they are collected.
inline void printTableRow(const char* kernel, const char* figure, const char* peer, double ratio,
                          const char* wanted) {
    std::printf("| %s | %s | %s | %.3f | %s |\n", kernel, figure, peer, ratio, wanted);
}
