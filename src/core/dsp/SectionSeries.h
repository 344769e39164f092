#pragma once

#include <span>

#include "core/dsp/GlideFilter.h"

namespace corvane {

/// Sections in series over a block of at most `kBlockFrames` samples, in place. Equal, bit for bit, to
/// `processBuffer` of each in turn; at rest they run as a pipeline, six at a time, each section some
/// samples behind the one before it, so that their recursions overlap; two or four left over share a loop.
/// [render]
void processSeries(std::span<GlideFilter> sections, double* samples, int count);

/// Two sections over a block each of at most `kBlockFrames` samples, in place, `a` over `x` and `b` over `y`.
/// Equal, bit for bit, to `processBuffer` of both; at rest they take the time of one. [render]
void processSideBySide(GlideFilter& a, double* x, GlideFilter& b, double* y, int count);

}  // namespace corvane
