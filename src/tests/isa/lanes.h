// Vectors from and to their lanes, lane 0 first, with the compiler barriers at both ends. None of
// these is inlined: inside a routine they would be compiled for its extension and every older one,
// and a routine must only depend on the extension that it checks.
#pragma once

#include <emmintrin.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "tests/isa/check.h"
#include "tests/isa/opaque.h"

namespace vorn {

inline constexpr std::size_t vectorBytes = 16;

template <typename Lane>
using VectorLanes = std::array<Lane, vectorBytes / sizeof(Lane)>;

/// An operand of these lanes, unknown to the compiler; lanes that are not given are zero.
template <typename Lane>
__attribute__((noinline)) __m128i operandOf(const VectorLanes<Lane>& lanes) {
    __m128i vector{};
    std::memcpy(&vector, lanes.data(), sizeof vector);
    return opaque(vector);
}

/// The same operand with one lane changed.
template <typename Lane>
__attribute__((noinline)) __m128i withLane(__m128i vector, std::size_t lane, Lane value) {
    VectorLanes<Lane> lanes{};
    std::memcpy(lanes.data(), &vector, sizeof vector);
    lanes[lane] = value;
    return operandOf<Lane>(lanes);
}

/// The lanes of a result that was computed whole.
template <typename Lane>
__attribute__((noinline)) VectorLanes<Lane> lanesOf(__m128i result) {
    const __m128i computed = opaque(result);
    VectorLanes<Lane> lanes{};
    std::memcpy(lanes.data(), &computed, sizeof computed);
    return lanes;
}

/// Appends `count` lanes of a result, from lane `first` on.
template <typename Lane>
__attribute__((noinline)) void addLanes(Actual& actual, __m128i result, std::size_t first,
                                        std::size_t count) {
    const VectorLanes<Lane> lanes = lanesOf<Lane>(result);
    for (std::size_t lane = first; lane < first + count; ++lane) {
        actual.lanes.push_back(laneValue(lanes.at(lane)));
    }
}

/// Appends every lane of a result.
template <typename Lane>
void addLanes(Actual& actual, __m128i result) {
    addLanes<Lane>(actual, result, 0, VectorLanes<Lane>().size());
}

/// Appends a result that an instruction leaves in a general register or in the flags.
template <typename Integer>
__attribute__((noinline)) void addInteger(Actual& actual, Integer result) {
    actual.lanes.push_back(laneValue(opaqueInteger(result)));
}

}  // namespace vorn
