#pragma once

#include <CL/cl_icd.h>

namespace diagnosis {

/// `below` for rows that share a context: the first one that is created is kept, and whoever asks
/// for one with the same arguments gets it, retained, until ReleaseSharedContext. Questions about
/// platforms, devices and that context are asked once: the same one again has the same answer. All
/// else is handed on, the row's own retaining and releasing too, so that a row sees what it would
/// see without this. A process has one, whose `below` stays the same until it is released.
const cl_icd_dispatch& WithSharedContext(const cl_icd_dispatch& below);

/// Releases the context, if there is one, and forgets the answers.
void ReleaseSharedContext();

}  // namespace diagnosis
