// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pulse/stream.h>

namespace lorvane {

/// Ends a stream of which nobody wants to hear any more, and gives up its reference. Under the lock of its
/// connection. A stream that the server is still making can only be ended when it is made, so that waits.
void endStream(pa_stream* stream);

} // namespace lorvane
