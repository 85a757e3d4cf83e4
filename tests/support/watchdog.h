#pragma once

namespace support {

/// The running test case may go on for this long from now; every case starts with 60 seconds. A case that
/// takes longer ends the program with exit code 4 and the case's name.
void AllowSeconds(unsigned seconds);

}  // namespace support
