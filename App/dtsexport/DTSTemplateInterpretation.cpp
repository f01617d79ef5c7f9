#include "DTSTemplateInterpretation.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <numeric>

namespace tessel {
namespace dts_interpretation {
namespace {

using F = DTSSemanticFieldID;
using Orientation = DTSInterpretedLine::Orientation;
using Classification = DTSInterpretationClassification;

// A rectangle this thin (of the page) that is filled is a rule drawn as a rectangle.
constexpr double thinRule = 0.004;
// Horizontal lines whose ends lie this close (of the page) share an extent.
constexpr double extentTolerance = 0.01;
constexpr int minimumTableLines = 5;
// A row band within this fraction of the usual band height is a regular row.
constexpr double rowBandTolerance = 0.25;
// A vertical line that crosses this share of the rows' height bounds a column.
constexpr double columnCrossing = 0.6;
constexpr double baseBandScore = 0.45;
constexpr double confidentTable = 0.6, foundTable = 0.75;
constexpr double exactMatchScore = 0.95, synonymScore = 0.85;

struct Segment {
    double fixed, from, to;
    int id;
};

std::vector<DTSInterpretedLine> merged(std::vector<Segment> segments, Orientation orientation, int& nextID) {
    std::sort(segments.begin(), segments.end(), [](const Segment& a, const Segment& b) { return a.fixed < b.fixed; });
    std::vector<DTSInterpretedLine> lines;
    for (std::size_t first = 0; first < segments.size();) {
        std::size_t last = first + 1;
        while (last < segments.size() && segments[last].fixed - segments[last - 1].fixed <= axisTolerance) ++last;
        std::vector<Segment> along(segments.begin() + static_cast<std::ptrdiff_t>(first), segments.begin() + static_cast<std::ptrdiff_t>(last));
        std::sort(along.begin(), along.end(), [](const Segment& a, const Segment& b) { return a.from < b.from; });
        for (std::size_t i = 0; i < along.size();) {
            DTSInterpretedLine line{nextID++, orientation, 0, {along[i].from, along[i].to}, {}};
            double fixedSum = 0;
            std::size_t j = i;
            for (; j < along.size() && along[j].from - line.range.second <= mergeGap; ++j) {
                line.range.second = std::max(line.range.second, along[j].to);
                line.supportingLineIDs.push_back(along[j].id);
                fixedSum += along[j].fixed;
            }
            line.fixedCoordinate = fixedSum / static_cast<double>(j - i);
            lines.push_back(std::move(line));
            i = j;
        }
        first = last;
    }
    return lines;
}

// ---- labels ----

bool verticalBetween(const std::vector<DTSInterpretedLine>& verticals, double left, double right, double y) {
    return std::any_of(verticals.begin(), verticals.end(), [&](const DTSInterpretedLine& v) {
        return v.fixedCoordinate > left && v.fixedCoordinate < right && v.range.first <= y && v.range.second >= y;
    });
}

// Words on one baseline, close together and not parted by a rule, make one label.
std::vector<DTSInterpretedLabel> labelsOf(const PDFStructuralPage& page, const std::vector<DTSInterpretedLine>& verticals) {
    std::vector<const PDFTextEvidence*> words;
    for (const auto& word : page.text) words.push_back(&word);
    const auto centre = [](const PDFRect& r) { return r.y + r.height / 2; };
    std::sort(words.begin(), words.end(), [&](const PDFTextEvidence* a, const PDFTextEvidence* b) {
        if (std::fabs(centre(a->normalizedBounds) - centre(b->normalizedBounds)) > std::min(a->normalizedBounds.height, b->normalizedBounds.height) / 2) {
            return centre(a->normalizedBounds) < centre(b->normalizedBounds);
        }
        return a->normalizedBounds.x < b->normalizedBounds.x;
    });
    std::vector<DTSInterpretedLabel> labels;
    for (const auto* word : words) {
        const PDFRect& b = word->normalizedBounds;
        if (!labels.empty()) {
            auto& last = labels.back();
            const bool sameLine = std::fabs(centre(last.bounds) - centre(b)) <= std::max(last.bounds.height, b.height) / 2;
            const double gap = b.x - last.bounds.right();
            if (sameLine && gap >= -b.height && gap <= 1.2 * b.height && !verticalBetween(verticals, last.bounds.right(), b.x, centre(b))) {
                last.rawTokens.push_back(word->text);
                last.supportingTextIDs.push_back(word->id);
                const double top = std::min(last.bounds.y, b.y), bottom = std::max(last.bounds.bottom(), b.bottom());
                last.bounds = {last.bounds.x, top, std::max(last.bounds.right(), b.right()) - last.bounds.x, bottom - top};
                continue;
            }
        }
        labels.push_back({static_cast<int>(labels.size()), {word->text}, {}, b, {word->id}});
    }
    for (auto& label : labels) {
        std::string joined;
        for (const auto& token : label.rawTokens) joined += (joined.empty() ? "" : " ") + token;
        label.normalizedText = normalizedLabel(joined);
    }
    return labels;
}

// ---- table candidates ----

struct Run {
    std::vector<const DTSInterpretedLine*> lines;  // top to bottom
    double left, right;
};

std::vector<Run> runsOf(const std::vector<DTSInterpretedLine>& horizontals) {
    std::vector<Run> groups;
    for (const auto& line : horizontals) {
        auto group = std::find_if(groups.begin(), groups.end(), [&](const Run& r) {
            return std::fabs(r.left - line.range.first) <= extentTolerance && std::fabs(r.right - line.range.second) <= extentTolerance;
        });
        if (group == groups.end()) {
            groups.push_back({{}, line.range.first, line.range.second});
            group = std::prev(groups.end());
        }
        group->lines.push_back(&line);
    }
    std::vector<Run> runs;
    for (auto& group : groups) {
        if (static_cast<int>(group.lines.size()) < minimumTableLines) continue;
        std::sort(group.lines.begin(), group.lines.end(), [](const auto* a, const auto* b) { return a->fixedCoordinate < b->fixedCoordinate; });
        runs.push_back(group);
    }
    return runs;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

std::string twoPlaces(double value) {
    const long hundredths = std::lround(value * 100);
    return std::to_string(hundredths / 100) + "." + (hundredths % 100 < 10 ? "0" : "") + std::to_string(hundredths % 100);
}

DTSTableCandidate candidateOf(const Run& run, const std::vector<DTSInterpretedLine>& verticals, int id, int pageIndex) {
    DTSTableCandidate table;
    table.id = id;
    table.pageIndex = pageIndex;
    std::vector<double> bands;
    for (std::size_t i = 1; i < run.lines.size(); ++i) bands.push_back(run.lines[i]->fixedCoordinate - run.lines[i - 1]->fixedCoordinate);
    const double usual = median(bands);
    // The rows are the regular bands at the bottom of the run; taller bands above them are the header.
    std::size_t firstRow = bands.size();
    while (firstRow > 0 && std::fabs(bands[firstRow - 1] - usual) <= rowBandTolerance * usual) --firstRow;
    const double top = run.lines.front()->fixedCoordinate, bottom = run.lines.back()->fixedCoordinate;
    table.bounds = {run.left, top, run.right - run.left, bottom - top};
    for (std::size_t i = firstRow; i < bands.size(); ++i) {
        table.rowSlots.push_back({run.left, run.lines[i]->fixedCoordinate, run.right - run.left, bands[i]});
    }
    const double rowsTop = run.lines[firstRow]->fixedCoordinate;
    if (firstRow > 0) table.headerBounds = PDFRect{run.left, top, run.right - run.left, rowsTop - top};
    for (const auto* line : run.lines) table.supportingLineIDs.push_back(line->id);

    // Columns: the vertical rules that cross the rows, with the table's own sides.
    std::vector<const DTSInterpretedLine*> boundaries;
    int fullHeight = 0;
    for (const auto& v : verticals) {
        if (v.fixedCoordinate < run.left - extentTolerance || v.fixedCoordinate > run.right + extentTolerance) continue;
        const double covered = std::min(v.range.second, bottom) - std::max(v.range.first, rowsTop);
        if (covered < columnCrossing * (bottom - rowsTop)) continue;
        boundaries.push_back(&v);
        if (v.range.first <= top + mergeGap && v.range.second >= bottom - mergeGap) ++fullHeight;
    }
    std::vector<std::pair<double, std::optional<int>>> edges{{run.left, std::nullopt}, {run.right, std::nullopt}};
    for (const auto* v : boundaries) edges.emplace_back(v->fixedCoordinate, v->id);
    std::sort(edges.begin(), edges.end());
    std::vector<std::pair<double, std::vector<int>>> xs;
    for (const auto& [x, lineID] : edges) {
        if (xs.empty() || x - xs.back().first > mergeGap) xs.push_back({x, {}});
        if (lineID) xs.back().second.push_back(*lineID);
    }
    for (std::size_t i = 1; i < xs.size(); ++i) {
        DTSGridColumn column;
        column.id = static_cast<int>(table.columns.size());
        column.bounds = {xs[i - 1].first, top, xs[i].first - xs[i - 1].first, bottom - top};
        column.rowRelativeRegion = {(xs[i - 1].first - run.left) / (run.right - run.left), 0, column.bounds.width / (run.right - run.left), 1};
        column.supportingLineIDs = xs[i - 1].second;
        column.supportingLineIDs.insert(column.supportingLineIDs.end(), xs[i].second.begin(), xs[i].second.end());
        table.columns.push_back(std::move(column));
    }

    // The score: the bands, then the columns (full at ten), full-height rules (full at five) and regularity.
    double deviation = 0;
    if (!table.rowSlots.empty() && usual > 0) {
        double sum = 0;
        for (const auto& row : table.rowSlots) sum += (row.height - usual) * (row.height - usual);
        deviation = std::sqrt(sum / static_cast<double>(table.rowSlots.size())) / usual;
    }
    const double columnsWeight = 0.18 * std::min(1.0, static_cast<double>(table.columns.size()) / 10);
    const double rulesWeight = 0.1 * std::min(1.0, fullHeight / 5.0);
    const double regularity = 0.15 * std::max(0.0, 1 - deviation / 0.06);
    table.structuralScore = (table.rowSlots.size() >= 2 ? baseBandScore : 0) + columnsWeight + rulesWeight + regularity;
    table.scoreComponents = {"regular row bands: " + std::to_string(table.rowSlots.size()) + " rows",
                             "aligned columns: " + std::to_string(table.columns.size()),
                             "full-height column rules: " + std::to_string(fullHeight),
                             "row spacing deviation " + twoPlaces(deviation),
                             "100% horizontal-boundary coverage (" + std::to_string(run.lines.size()) + " rules)"};
    return table;
}

// ---- field recognition ----

struct Match {
    DTSSemanticFieldID field;
    double score;
    std::string how;
};

std::vector<Match> matchesOf(const std::string& text, DTSSemanticScope scope) {
    std::vector<Match> matches;
    for (const auto& field : dts_fields::ofScope(scope)) {
        const auto& hints = recognitionHints(field.id);
        for (std::size_t i = 0; i < hints.size(); ++i) {
            if (hints[i] != text) continue;
            matches.push_back({field.id, i == 0 ? exactMatchScore : synonymScore, i == 0 ? "exact label match" : "recognized label/synonym"});
            break;
        }
    }
    std::sort(matches.begin(), matches.end(), [](const Match& a, const Match& b) { return a.score > b.score; });
    return matches;
}

bool inside(const PDFRect& outer, const PDFRect& r) {
    const double cx = r.x + r.width / 2, cy = r.y + r.height / 2;
    return cx >= outer.x && cx <= outer.right() && cy >= outer.y && cy <= outer.bottom();
}

std::string quoted(const std::string& text) { return "\u201C" + text + "\u201D"; }

// A table whose bands are all alike but whose first band alone holds words has its header in that band.
void promoteLabelledFirstBand(DTSTableCandidate& table, const std::vector<DTSInterpretedLabel>& labels) {
    if (table.headerBounds || table.rowSlots.size() < 2) return;
    const auto labelledBand = [&](const PDFRect& band) {
        return std::any_of(labels.begin(), labels.end(), [&](const DTSInterpretedLabel& l) { return inside(band, l.bounds); });
    };
    if (!labelledBand(table.rowSlots[0]) || labelledBand(table.rowSlots[1])) return;
    table.headerBounds = table.rowSlots.front();
    table.rowSlots.erase(table.rowSlots.begin());
    table.scoreComponents.front() = "regular row bands: " + std::to_string(table.rowSlots.size()) + " rows, the first band labelled as the header";
}

// The labels above the rows, each in the column under its centre; a label whose cell (between the rules
// that pass through it) holds several columns spans them as their parent.
void readHeader(DTSTableCandidate& table, const std::vector<DTSInterpretedLabel>& labels, const std::vector<DTSInterpretedLine>& verticals) {
    const double rowHeight = table.rowSlots.empty() ? 0 : table.rowSlots.front().height;
    const double headerTop = table.headerBounds ? table.headerBounds->y : table.bounds.y - 2 * rowHeight;
    const double headerBottom = table.rowSlots.empty() ? table.bounds.y : table.rowSlots.front().y;
    const PDFRect header{table.bounds.x, headerTop, table.bounds.width, headerBottom - headerTop};
    for (const auto& label : labels) {
        if (!inside(header, label.bounds)) continue;
        table.headerLabels.push_back(label.normalizedText);
        const double cy = label.bounds.y + label.bounds.height / 2;
        double left = table.bounds.x, right = table.bounds.right();
        for (const auto& v : verticals) {
            if (v.range.first > cy || v.range.second < cy) continue;
            if (v.fixedCoordinate <= label.bounds.x + mergeGap) left = std::max(left, v.fixedCoordinate);
            if (v.fixedCoordinate >= label.bounds.right() - mergeGap) right = std::min(right, v.fixedCoordinate);
        }
        std::vector<DTSGridColumn*> under;
        for (auto& column : table.columns) {
            const double cx = column.bounds.x + column.bounds.width / 2;
            if (cx > left && cx < right) under.push_back(&column);
        }
        if (under.size() > 1) {
            for (auto* column : under) column->parentHeaderLabels.push_back(label.normalizedText);
        } else if (under.size() == 1) {
            under.front()->headerLabels.push_back(label.normalizedText);
        }
    }
}

std::string joined(const std::vector<std::string>& words, std::string_view separator = " ") {
    std::string text;
    for (const auto& word : words) text += (text.empty() ? "" : std::string(separator)) + word;
    return text;
}

DTSSemanticSuggestion columnSuggestion(const DTSGridColumn& column, int id) {
    DTSSemanticSuggestion s;
    s.id = id;
    s.region = column.rowRelativeRegion;
    s.columnID = column.id;
    s.scope = DTSSemanticScope::crewRow;
    const std::string direct = joined(column.headerLabels), parent = joined(column.parentHeaderLabels);
    s.rawLabels = column.parentHeaderLabels;
    s.rawLabels.insert(s.rawLabels.end(), column.headerLabels.begin(), column.headerLabels.end());
    if (!direct.empty()) s.evidence.push_back("direct header tokens: " + quoted(direct));
    if (!parent.empty()) s.evidence.push_back("spanning parent tokens: " + quoted(parent));
    // The structural path (parent and direct header together) is tried before the direct header alone.
    std::vector<std::string> readings;
    if (!parent.empty() && !direct.empty()) readings.push_back(parent + " " + direct);
    if (!direct.empty()) readings.push_back(direct);
    if (direct.empty() && !parent.empty()) readings.push_back(parent);
    for (const auto& reading : readings) {
        const auto matches = matchesOf(reading, DTSSemanticScope::crewRow);
        if (matches.empty()) continue;
        if (readings.size() > 1 && reading == readings.front()) s.evidence.push_back("structural header path: " + quoted(parent + " / " + direct));
        s.semanticFieldID = matches.front().field;
        s.score = matches.front().score;
        s.evidence.push_back(matches.front().how);
        for (std::size_t i = 1; i < matches.size(); ++i) s.alternatives.push_back({matches[i].field, matches[i].score});
        s.classification = Classification::found;
        return s;
    }
    s.evidence.push_back(readings.empty() ? "no header label above this column" : "no recognized crew label in " + quoted(readings.front()));
    s.classification = Classification::unresolved;
    return s;
}

// A standalone label's writing place: the rule or text widget beside it, else the blank to its right.
DTSSemanticSuggestion standaloneSuggestion(const DTSInterpretedLabel& label, const Match& match, DTSSemanticScope scope, const PDFStructuralPage& page,
                                           const std::vector<DTSInterpretedLine>& horizontals, int id) {
    DTSSemanticSuggestion s;
    s.id = id;
    s.semanticFieldID = match.field;
    s.scope = scope;
    s.score = match.score;
    s.rawLabels = {label.normalizedText};
    s.evidence = {"recognized standalone label: " + quoted(label.normalizedText), match.how};
    const PDFRect& b = label.bounds;
    std::optional<PDFRect> writable;
    for (const auto& widget : page.widgets) {
        const PDFRect& w = widget.normalizedBounds;
        if (w.x >= b.right() - mergeGap && w.x - b.right() <= 0.05 && w.y < b.bottom() && w.bottom() > b.y) writable = w;
    }
    for (const auto& line : horizontals) {
        if (writable) break;
        const bool beside = line.range.second > b.right() + 0.01 && line.range.first <= b.right() + 0.02;
        const bool underBaseline = line.fixedCoordinate >= b.y + b.height / 2 && line.fixedCoordinate <= b.bottom() + 0.01;
        if (beside && underBaseline) {
            const double left = std::max(line.range.first, b.right() + 0.005);
            writable = PDFRect{left, line.fixedCoordinate - 1.4 * b.height, line.range.second - left, 1.4 * b.height};
        }
    }
    if (writable) {
        s.region = *writable;
        s.evidence.push_back("adjacent writable boundary supports placement");
        s.classification = Classification::found;
    } else {
        s.region = {b.right() + 0.005, b.y, std::min(0.25, 1 - b.right() - 0.005), b.height};
        s.evidence.push_back("adjacent blank region is unbounded and requires review");
        s.classification = Classification::pleaseReview;
        s.score = std::min(s.score, 0.6);
    }
    return s;
}

}  // namespace

std::string normalizedLabel(std::string_view text) {
    std::string out;
    bool blank = true;
    for (const unsigned char c : text) {
        const bool kept = std::isalnum(c) || c == '/' || c == '#' || c >= 0x80;
        if (!kept) {
            if (!blank) out += ' ';
            blank = true;
            continue;
        }
        out += static_cast<char>(std::toupper(c));
        blank = false;
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

const std::vector<std::string>& recognitionHints(DTSSemanticFieldID field) {
    static const std::map<DTSSemanticFieldID, std::vector<std::string>> hints = [] {
        const std::map<DTSSemanticFieldID, std::vector<std::string>> phrases{
            {F::productionName, {"PRODUCTION", "PRODUCTION NAME", "PRODUCTION TITLE", "SHOW", "SHOW TITLE", "PROJECT", "PICTURE"}},
            {F::productionCompany, {"PRODUCTION COMPANY", "COMPANY", "PROD CO", "PRODUCTION CO"}},
            {F::productionDepartment, {"DEPARTMENT", "DEPT"}},
            {F::workdayDate, {"DATE", "WORK DATE", "SHOOT DATE", "SHOOTING DATE"}},
            {F::workdayDayOfWeek, {"DAY", "DAY OF WEEK", "WEEKDAY"}},
            {F::workdayWorkState, {"WORK STATE", "STATE", "STATE WORKED"}},
            {F::workdayWorkLocation, {"LOCATION", "WORK LOCATION", "STUDIO / LOCATION", "STUDIO/LOCATION", "SET"}},
            {F::workdayNotes, {"NOTES", "REMARKS", "COMMENTS"}},
            {F::sharedCall, {"GENERAL CREW CALL", "CREW CALL", "GENERAL CALL", "CALL"}},
            {F::sharedLunchOut, {"OFFICIAL LUNCH OUT", "LUNCH OUT", "MEAL OUT", "1ST MEAL OUT"}},
            {F::sharedLunchIn, {"OFFICIAL LUNCH IN", "LUNCH IN", "MEAL IN", "1ST MEAL IN"}},
            {F::sharedWrap, {"CAMERA WRAP", "COMPANY WRAP", "WRAP", "SHOOTING WRAP"}},
            {F::sharedTravelTime, {"TRAVEL TIME", "TRAVEL"}},
            {F::sharedDepartmentMileage, {"DEPARTMENT MILEAGE", "DEPT MILEAGE"}},
            {F::sharedGraceCalled, {"GRACE CALLED", "GRACE", "MEAL GRACE"}},
            {F::crewName, {"NAME", "EMPLOYEE", "EMPLOYEE NAME", "CREW NAME", "CREW MEMBER", "PRINT NAME"}},
            {F::crewDTSName, {"DTS NAME", "NAME ON DTS"}},
            {F::crewPosition, {"POSITION", "OCCUPATION", "JOB TITLE", "TITLE", "CLASSIFICATION", "JOB"}},
            {F::crewOccupationCode, {"OCC CODE", "OCCUPATION CODE", "OCC", "OCC #", "CODE"}},
            {F::crewLocality, {"LOCALITY", "LOCAL / DISTANT", "LOCAL/DISTANT", "L/D", "LOC"}},
            {F::crewEmploymentSchedule, {"SCHEDULE", "DAILY / WEEKLY", "DAILY/WEEKLY", "D/W"}},
            {F::crewCall, {"CALL", "CALL TIME", "CREW CALL", "START"}},
            {F::crewLunchOut, {"1ST MEAL OUT", "MEAL 1 OUT", "MEAL OUT", "LUNCH OUT", "1ST MEAL START", "MEAL 1 START"}},
            {F::crewLunchIn, {"1ST MEAL IN", "MEAL 1 IN", "MEAL IN", "LUNCH IN", "1ST MEAL FINISH", "MEAL 1 FINISH"}},
            {F::crewWrap, {"WRAP", "WRAP TIME", "DISMISS", "DISMISSED", "FINISH"}},
            {F::crewNDB, {"NDB", "N D B", "NON DEDUCTIBLE BREAKFAST", "NON DEDUCTIBLE"}},
            {F::crewMileage, {"MILEAGE", "MILES", "CREW MILEAGE"}},
            {F::crewBoxRentalApplies, {"BOX RENTAL", "KIT RENTAL", "BOX / KIT RENTAL", "BOX/KIT RENTAL", "BOX / KIT", "BOX/KIT", "BOX", "KIT"}},
            {F::approvalDepartmentHeadName, {"DEPARTMENT HEAD", "APPROVED BY DEPARTMENT HEAD", "APPROVED BY", "DEPT HEAD", "SUPERVISOR"}},
            {F::approvalSignature, {"SIGNATURE", "DEPARTMENT HEAD SIGNATURE", "SIGNED", "APPROVAL SIGNATURE"}},
            {F::derivedPageXOfY, {"PAGE OF", "PAGE X OF Y", "PAGE"}}};
        std::map<DTSSemanticFieldID, std::vector<std::string>> normal;
        for (const auto& [id, list] : phrases) {
            for (const auto& phrase : list) normal[id].push_back(normalizedLabel(phrase));
        }
        return normal;
    }();
    static const std::vector<std::string> none;
    const auto found = hints.find(field);
    return found == hints.end() ? none : found->second;
}

std::vector<DTSInterpretedLine> normalizedLines(const PDFStructuralPage& page) {
    std::vector<Segment> horizontal, vertical;
    const auto add = [&](PDFPoint a, PDFPoint b, int id) {
        if (std::fabs(a.y - b.y) <= axisTolerance && std::fabs(a.x - b.x) > axisTolerance) {
            horizontal.push_back({(a.y + b.y) / 2, std::min(a.x, b.x), std::max(a.x, b.x), id});
        } else if (std::fabs(a.x - b.x) <= axisTolerance && std::fabs(a.y - b.y) > axisTolerance) {
            vertical.push_back({(a.x + b.x) / 2, std::min(a.y, b.y), std::max(a.y, b.y), id});
        }
    };
    for (const auto& line : page.lines) add(line.normalizedStart, line.normalizedEnd, line.id);
    int id = static_cast<int>(page.lines.size());
    for (const auto& rect : page.rectangles) {
        const PDFRect& r = rect.normalizedBounds;
        const int rectID = id++;
        if (rect.filled && r.height <= thinRule && r.width > thinRule) {
            horizontal.push_back({r.y + r.height / 2, r.x, r.right(), rectID});
        } else if (rect.filled && r.width <= thinRule && r.height > thinRule) {
            vertical.push_back({r.x + r.width / 2, r.y, r.bottom(), rectID});
        } else if (rect.stroked) {
            add({r.x, r.y}, {r.right(), r.y}, rectID);
            add({r.x, r.bottom()}, {r.right(), r.bottom()}, rectID);
            add({r.x, r.y}, {r.x, r.bottom()}, rectID);
            add({r.right(), r.y}, {r.right(), r.bottom()}, rectID);
        }
    }
    int nextID = 0;
    auto lines = merged(std::move(horizontal), Orientation::horizontal, nextID);
    auto verticals = merged(std::move(vertical), Orientation::vertical, nextID);
    lines.insert(lines.end(), std::make_move_iterator(verticals.begin()), std::make_move_iterator(verticals.end()));
    return lines;
}

DTSTemplateInterpretation interpret(const PDFStructuralInspection& inspection, int pageIndex) {
    const PDFStructuralPage& page = inspection.pages.at(static_cast<std::size_t>(pageIndex));
    DTSTemplateInterpretation result;
    result.sourceFingerprint = inspection.sha256;
    result.normalizedLines = normalizedLines(page);
    result.diagnostics.emplace_back(tolerancesDiagnostic);
    std::vector<DTSInterpretedLine> horizontals, verticals;
    for (const auto& line : result.normalizedLines) (line.orientation == Orientation::horizontal ? horizontals : verticals).push_back(line);
    const auto labels = labelsOf(page, verticals);

    for (const auto& run : runsOf(horizontals)) {
        result.tableCandidates.push_back(candidateOf(run, verticals, static_cast<int>(result.tableCandidates.size()), pageIndex));
    }
    std::sort(result.tableCandidates.begin(), result.tableCandidates.end(),
              [](const DTSTableCandidate& a, const DTSTableCandidate& b) { return a.structuralScore > b.structuralScore; });
    for (auto& table : result.tableCandidates) {
        promoteLabelledFirstBand(table, labels);
        readHeader(table, labels, verticals);
    }

    int nextSuggestion = 0;
    const DTSTableCandidate* strongest = nullptr;
    if (!result.tableCandidates.empty() && result.tableCandidates.front().structuralScore >= confidentTable) strongest = &result.tableCandidates.front();
    if (!strongest) result.diagnostics.emplace_back(noConfidentTable);
    if (strongest) {
        DTSCrewTableSuggestion crew{strongest->id, Classification::found, strongest->rowSlots, strongest->columns, {}};
        for (const auto& column : strongest->columns) crew.semanticSuggestions.push_back(columnSuggestion(column, nextSuggestion++));
        // Two columns proposing one field both need the user.
        for (auto& s : crew.semanticSuggestions) {
            const auto same = std::count_if(crew.semanticSuggestions.begin(), crew.semanticSuggestions.end(), [&](const DTSSemanticSuggestion& o) {
                return o.semanticFieldID && o.semanticFieldID == s.semanticFieldID;
            });
            if (s.semanticFieldID && same > 1) {
                s.classification = Classification::pleaseReview;
                s.evidence.emplace_back("competing columns propose this semantic within one crew-row schema; review required");
            }
            if (s.classification == Classification::unresolved) result.unresolvedRegions.push_back(strongest->columns[static_cast<std::size_t>(*s.columnID)].bounds);
        }
        const auto found = std::count_if(crew.semanticSuggestions.begin(), crew.semanticSuggestions.end(),
                                         [](const DTSSemanticSuggestion& s) { return s.classification == Classification::found; });
        if (strongest->structuralScore < foundTable || found < 2) crew.classification = Classification::pleaseReview;
        result.crewTableSuggestion = std::move(crew);
    }

    // Standalone labels outside the table: document fields, or crew fields out of place.
    for (const auto& label : labels) {
        if (strongest) {
            // The table with its header: its own band, or room above it for a header drawn without rules.
            const PDFRect& table = strongest->bounds;
            const double rowHeight = strongest->rowSlots.empty() ? 0 : strongest->rowSlots.front().height;
            const double above = strongest->headerBounds ? 0 : 2 * rowHeight;
            const PDFRect withHeader{table.x, table.y - above, table.width, table.height + above};
            if (inside(withHeader, label.bounds)) continue;
        }
        auto matches = matchesOf(label.normalizedText, DTSSemanticScope::document);
        auto scope = DTSSemanticScope::document;
        if (matches.empty()) {
            matches = matchesOf(label.normalizedText, DTSSemanticScope::crewRow);
            scope = DTSSemanticScope::crewRow;
        }
        if (matches.empty()) continue;
        auto s = standaloneSuggestion(label, matches.front(), scope, page, horizontals, nextSuggestion++);
        for (std::size_t i = 1; i < matches.size(); ++i) s.alternatives.push_back({matches[i].field, matches[i].score});
        if (scope == DTSSemanticScope::crewRow) {
            s.classification = Classification::pleaseReview;
            s.evidence.emplace_back("label is outside strongest repeating table");
        }
        result.documentFieldSuggestions.push_back(std::move(s));
    }
    return result;
}

}  // namespace dts_interpretation

std::string_view toRawValue(DTSInterpretationClassification classification) noexcept {
    switch (classification) {
        case DTSInterpretationClassification::found: return "found";
        case DTSInterpretationClassification::pleaseReview: return "pleaseReview";
        case DTSInterpretationClassification::unresolved: return "unresolved";
    }
    return {};
}

}  // namespace tessel
