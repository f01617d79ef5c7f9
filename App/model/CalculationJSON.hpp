#pragma once

#include "App/model/JSONFields.hpp"
#include "PayrollDomain/DomainError.hpp"
#include "PayrollDomain/MinimumBandGuarantee.hpp"
#include "PayrollDomain/PayBandAllocation.hpp"
#include "PayrollDomain/PayBandTargetEntry.hpp"

// The machine form of the calculation records: field names as the records name them, durations as
// integer seconds under the name with "Seconds" appended, decimals as text, enumerations by case name,
// absent optionals omitted. Decoding throws MalformedInputError for a document of the wrong shape and
// the value type's own error for a value the type refuses.
namespace tessel::calculation_json {

PayBandSchedule payBandSchedule(const Json& bands, const std::string& path);
PayBandAllocationInput allocationInput(const Json& segments, const std::string& path);
MinimumBandGuarantee minimumBandGuarantee(const Json& guarantee, const std::string& path);

Json toJSON(const PayBandEntryThreshold& threshold);
Json toJSON(const PayBandAllocationComponent& component);
Json toJSON(const PayBandAllocationTraceEntry& entry);
Json toJSON(const PayBandAllocationTrace& trace);
// The components and the trace; the schedule and input are the caller's own.
Json toJSON(const PayBandAllocationResult& result);
Json toJSON(const PayBandTargetEntry& entry);

// {"error": case name, payload fields…, "message": the sentence}
Json errorJSON(const DomainError& error);

}  // namespace tessel::calculation_json
