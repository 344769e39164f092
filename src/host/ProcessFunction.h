#pragma once

namespace corvane::host {

/// The strip's process function: takes each instance's pointers and packets, calls its processor, publishes
/// its meters. `inBegin` up to `inEnd` are instance records, each a table of pointers by field. [render]
void processInstances(void* const* inBegin[], const void* inEnd);

}  // namespace corvane::host
