#pragma once

#include <leptonica/allheaders.h>

#include <filesystem>

// A signature as a scanned one looks: a wide dark stroke on white, written as a PNG.
namespace tessel::testing {

inline bool writeSignaturePng(const std::filesystem::path& png) {
    PIX* pix = pixCreate(300, 80, 32);
    pixSetAll(pix);
    pixRasterop(pix, 20, 30, 260, 20, PIX_CLR, nullptr, 0, 0);
    const bool written = pixWrite(png.c_str(), pix, IFF_PNG) == 0;
    pixDestroy(&pix);
    return written;
}

}  // namespace tessel::testing
