// The recurrence of the floating point test.
#pragma once

namespace vorn {

inline constexpr int floatingPointRepetitions = 100;
inline constexpr int floatingPointSteps = 12000;  ///< of each repetition

/// What a cycle starts from.
struct FloatingPointOperands {
    double x1 = 3.543111;
    double x2 = 2.123211;
    double x3 = -2.335311;
    double x4 = -4.089611;
    double t = 0.49999675;
};

/// The sum of one cycle, in a type that computes as double does. Known to the last bit as long as
/// every line is evaluated from left to right as it stands, each operation rounded by itself.
template <typename Real>
Real floatingPointSum(Real x1, Real x2, Real x3, Real x4, Real t) {
    Real s{0};
    for (int repetition = 0; repetition < floatingPointRepetitions; ++repetition) {
        for (int step = 0; step < floatingPointSteps; ++step) {
            const Real y1 = (x3 - x4 + x1 + x2) * t;
            const Real y2 = (y1 - x3 + x4 + x2) * t;
            x3 = (x3 + (y1 - y2) + x4) * t;
            x4 = t * (x3 - (y1 - y2) + x4);
            x1 = (y1 * y2 / x3) * t;
            x2 = t * x3 * (x1 / y2);
            s = s + y1 - y2 - x3 + x4 - x1 + x2;
        }
        t = 1.0 - t;
    }
    return s;
}

}  // namespace vorn
