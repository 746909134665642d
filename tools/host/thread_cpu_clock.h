// CPU time consumed by the calling thread, for measuring what the plug-in itself costs: wall time
// would also count the host's own work and whatever else the machine is doing.
#pragma once

namespace vrnhost {

// Seconds of CPU time used by the current thread so far.
double threadCpuSeconds();

}  // namespace vrnhost
