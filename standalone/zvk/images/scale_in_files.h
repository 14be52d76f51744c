// Scaling of pictures that are larger than memory: every image is in a temporary file, every picture is read and
// written row by row.
#pragma once

#include <cstdint>

#include "standalone/zvk/images/scale_job.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {

// Does the job with blocks of about `blockSize` bytes of each file in memory. The pixels of the result are those of the
// same job done in memory. Throws as told in messages.h.
void ScaleInFiles(PluginSession &session, const ScaleJob &job, int32_t blockSize);

}  // namespace standalone
