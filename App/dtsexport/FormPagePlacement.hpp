#pragma once

#include <string>

// Placing drawn pages over copies of a blank form page through QPDF, so that the form page is kept
// exactly as it is. Kept apart, and free of the rest of the program's headers, because QPDF's headers
// are compiled in C++17 under Clang (its JSON class does not compile there in C++20).
namespace tessel::form_pages {

enum class BlankPageCheck { fits, unreadable, notOnePage, otherSize };

// Whether the blank is a readable PDF of one page whose media box is `width` × `height` points.
BlankPageCheck check(const std::string& blank, double width, double height);

// The blank page repeated once per page of `drawn`, each drawn page placed over its copy. Throws
// std::exception when a PDF cannot be read or written.
std::string placed(const std::string& blank, const std::string& drawn);

}  // namespace tessel::form_pages
