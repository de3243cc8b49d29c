#pragma once

#include <cstddef>
#include <cstdint>

// The CRC-32 of ISO-HDLC (the one of zip, PNG and Ethernet) over size bytes,
// continuing from crc (0 to start). Detects every burst of up to 32 damaged
// bits, and a cut or altered operation file with near certainty.
uint32_t crc32(const void* data, size_t size, uint32_t crc = 0);
