// A computation repeated, as a light stress of the unit that executes it.
#pragma once

namespace vorn {

/// How often the MMX, SSE, SSE2, SSE3 and AVX computations are repeated.
inline constexpr int repetitions = 1000000;

/// The last result of a repeated computation.
template <typename Value>
struct Repeated {
    Value result{};
    bool everyRepetition = true;  ///< every repetition gave the reference
};

/// Calls `kernel` `times` times, or up to the first result that is not equal to `reference`.
template <typename Value, typename Kernel>
Repeated<Value> repeatWhileEqual(const Value& reference, const Kernel& kernel,
                                 int times = repetitions) {
    Repeated<Value> repeated;
    for (int repetition = 0; repetition < times && repeated.everyRepetition; ++repetition) {
        repeated.result = kernel();
        repeated.everyRepetition = repeated.result == reference;
    }
    return repeated;
}

}  // namespace vorn
