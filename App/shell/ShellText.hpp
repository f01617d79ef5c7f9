#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace tessel {

// The services' sentences are UTF-8; the window shows them unchanged.
inline QString qtext(std::string_view words) { return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size())); }
inline std::string utf8(const QString& text) { return text.toStdString(); }

}  // namespace tessel
