#include "PayBandAllocation.hpp"

#include <array>
#include <utility>

namespace tessel {
namespace {

using Kind = PayBandAllocationTimelineSegment::Kind;

constexpr std::array<std::pair<Kind, std::string_view>, 3> kindNames{{
    {Kind::compensableWork, "compensableWork"},
    {Kind::nonCompensableElapsed, "nonCompensableElapsed"},
    {Kind::guaranteedCompensation, "guaranteedCompensation"},
}};

}  // namespace

std::string_view toRawValue(Kind kind) noexcept {
    for (const auto& [candidate, name] : kindNames) {
        if (candidate == kind) return name;
    }
    return {};
}

std::optional<Kind> segmentKindFromRawValue(std::string_view raw) noexcept {
    for (const auto& [kind, name] : kindNames) {
        if (name == raw) return kind;
    }
    return std::nullopt;
}

std::string_view toRawValue(PayBandAllocationTrace::BoundaryConvention) noexcept {
    return "inclusiveLowerExclusiveUpper";
}

}  // namespace tessel
