#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/dtsexport/DTSSemanticField.hpp"
#include "App/dtsexport/PDFStructuralInspection.hpp"

// Proposals for a blank DTS page: where its crew table, rows and columns lie, and which field each column
// and each standalone label stands for, with a score and the reasons. Interpretation is transient and has
// no Production authority; the user confirms or corrects what it proposes.
namespace tessel {

enum class DTSInterpretationClassification { found, pleaseReview, unresolved };
std::string_view toRawValue(DTSInterpretationClassification classification) noexcept;

struct DTSInterpretedLine {
    enum class Orientation { horizontal, vertical };
    int id = 0;
    Orientation orientation = Orientation::horizontal;
    double fixedCoordinate = 0;       // y of a horizontal line, x of a vertical one (page-relative)
    std::pair<double, double> range;  // the closed interval it covers along itself
    std::vector<int> supportingLineIDs;  // vector lines (rectangles' edges counted after the lines)
};

struct DTSInterpretedLabel {
    int id = 0;
    std::vector<std::string> rawTokens;
    std::string normalizedText;
    PDFRect bounds;
    std::vector<int> supportingTextIDs;
};

struct DTSGridColumn {
    int id = 0;
    PDFRect bounds;
    PDFRect rowRelativeRegion;  // within one row: x and width page-relative to the row, y 0 and height 1
    std::vector<std::string> headerLabels, parentHeaderLabels;
    std::vector<int> supportingLineIDs;
};

struct DTSTableCandidate {
    int id = 0;
    int pageIndex = 0;
    PDFRect bounds;
    std::vector<PDFRect> rowSlots;
    std::vector<DTSGridColumn> columns;
    std::optional<PDFRect> headerBounds;
    std::vector<std::string> headerLabels;
    double structuralScore = 0;
    std::vector<std::string> scoreComponents;
    std::vector<int> supportingLineIDs;
};

struct DTSSemanticAlternative {
    DTSSemanticFieldID semanticFieldID;
    double score = 0;
};

struct DTSSemanticSuggestion {
    int id = 0;
    std::optional<DTSSemanticFieldID> semanticFieldID;
    std::optional<DTSSemanticScope> scope;
    PDFRect region;
    double score = 0;
    DTSInterpretationClassification classification = DTSInterpretationClassification::unresolved;
    std::vector<std::string> rawLabels;
    std::vector<std::string> evidence;
    std::vector<DTSSemanticAlternative> alternatives;
    std::optional<int> columnID;
};

struct DTSCrewTableSuggestion {
    int tableCandidateID = 0;
    DTSInterpretationClassification classification = DTSInterpretationClassification::pleaseReview;
    std::vector<PDFRect> rowSlots;
    std::vector<DTSGridColumn> columns;
    std::vector<DTSSemanticSuggestion> semanticSuggestions;
};

struct DTSTemplateInterpretation {
    std::string sourceFingerprint;
    std::vector<DTSInterpretedLine> normalizedLines;
    std::vector<DTSTableCandidate> tableCandidates;  // strongest first
    std::optional<DTSCrewTableSuggestion> crewTableSuggestion;
    std::vector<DTSSemanticSuggestion> documentFieldSuggestions;
    std::vector<PDFRect> unresolvedRegions;
    std::vector<std::string> diagnostics;
};

namespace dts_interpretation {

inline constexpr double axisTolerance = 0.0015;  // of the page: a segment this close to an axis lies on it
inline constexpr double mergeGap = 0.003;        // of the page: collinear lines this close are one
inline constexpr std::string_view tolerancesDiagnostic = "Interpreter uses page-relative tolerances: axis 0.0015, merge gap 0.003.";
inline constexpr std::string_view noConfidentTable = "No confident crew-table suggestion";
inline constexpr std::string_view authority = "Interpretation is transient and has no Production authority.";

// The vector lines, the edges of stroked rectangles and the thin filled rectangles a form draws its rules
// with, as horizontal and vertical lines merged along their axis.
std::vector<DTSInterpretedLine> normalizedLines(const PDFStructuralPage& page);

// The label phrases that name each field on real forms, in the normal form labels are compared in.
const std::vector<std::string>& recognitionHints(DTSSemanticFieldID field);
// Upper case, punctuation other than "/" and "#" dropped, runs of blanks as one space.
std::string normalizedLabel(std::string_view text);

DTSTemplateInterpretation interpret(const PDFStructuralInspection& inspection, int pageIndex = 0);

}  // namespace dts_interpretation
}  // namespace tessel
