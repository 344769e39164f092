#pragma once

namespace corvane {

/// Two doubles side by side. Arithmetic on it is the arithmetic of each lane, bit for bit, in one instruction
/// on every 64-bit PC; independent recursions run in its lanes at the price of one.
using Pair [[gnu::vector_size(16)]] = double;

/// `x` in both lanes.
inline Pair both(double x) { return Pair{x, x}; }

}  // namespace corvane
