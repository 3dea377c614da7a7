#pragma once
// What the fuzz targets share: the fuzzer's bytes as wide text, and the frame every input runs
// in.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "vx/vx.h"

namespace fuzz {

// UTF-8 read loosely, so that the dictionary's ASCII tokens stay whole while any 16-bit unit,
// surrogates and non-characters included, stays reachable: a lead byte with its continuation
// bytes gives one unit, a byte that starts no such sequence stands for itself.
vx::CVelStrW WideFromBytes(const std::uint8_t* data, std::size_t size);

// Runs body on one input. The one exception that an input may cause is the nesting limit's
// "dummy"; any other leaves, as a crash. Afterwards the process-wide caches are released, so
// that they do not grow with every input up to the fuzzer's memory limit.
template <class Body>
void RunInput(Body&& body) {
    try {
        body();
    } catch (const std::runtime_error& error) {
        if (std::string_view(error.what()) != "dummy") throw;
    }
    vx::Finalize();
}

}  // namespace fuzz
