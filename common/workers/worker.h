#pragma once

namespace diagnosis {

/// `union_triage worker`, which the pool starts, if need be behind a launcher: runs the rows that
/// it is told to over standard input and answers with what became of them on standard output. It
/// never calls OpenCL itself; a child of its own does. Returns the process's status.
int WorkerMain();

}  // namespace diagnosis
