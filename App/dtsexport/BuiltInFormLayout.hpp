#pragma once

#include <array>
#include <string_view>

// The built-in DTS form: one US Letter page, landscape, in PDF points from the top left. The blank page
// is drawn from this table at build time; the renderer fills the same boxes, so the two cannot drift.
namespace tessel::builtin_form {

inline constexpr double pageWidth = 792, pageHeight = 612;
inline constexpr double margin = 36;
inline constexpr double labelHeight = 9;     // the printed caption at the top of each box
inline constexpr double labelSize = 6;       // its font size
inline constexpr double valueSize = 10;      // a header value's font size
inline constexpr double rowValueSize = 9;    // a crew row value's font size
inline constexpr double smallestSize = 6.5;  // values shrink to this size to fit, no further
inline constexpr double padding = 3;

struct Box {
    std::string_view id;
    std::string_view label;
    double x, y, width, height;
    double valueLeft() const { return x + padding; }
    double valueTop() const { return y + labelHeight; }
    double valueWidth() const { return width - 2 * padding; }
    double valueHeight() const { return height - labelHeight - 1; }
};

// The header: the production and the day, then the day's shared times and facts.
inline constexpr std::array<Box, 14> header{{
    {"production", "PRODUCTION", 36, 60, 236, 28},
    {"company", "PRODUCTION COMPANY", 272, 60, 200, 28},
    {"department", "DEPARTMENT", 472, 60, 148, 28},
    {"date", "DATE", 620, 60, 84, 28},
    {"weekday", "DAY", 704, 60, 52, 28},
    {"workState", "WORK STATE", 36, 88, 70, 28},
    {"call", "GENERAL CREW CALL", 106, 88, 92, 28},
    {"lunchOut", "LUNCH OUT", 198, 88, 70, 28},
    {"lunchIn", "LUNCH IN", 268, 88, 70, 28},
    {"wrap", "WRAP", 338, 88, 70, 28},
    {"travel", "TRAVEL (HRS)", 408, 88, 80, 28},
    {"mileage", "DEPT. MILEAGE", 488, 88, 86, 28},
    {"grace", "GRACE CALLED", 574, 88, 80, 28},
    {"location", "STUDIO / LOCATION", 654, 88, 102, 28},
}};

// The crew table: its columns left to right, the header band and as many rows as fit legibly.
struct Column {
    std::string_view id;
    std::string_view label;
    double x, width;
    bool centered;
};
inline constexpr std::array<Column, 12> columns{{
    {"number", "#", 36, 20, true},
    {"name", "NAME", 56, 184, false},
    {"position", "POSITION", 240, 130, false},
    {"box", "BOX", 370, 32, true},
    {"call", "CALL", 402, 42, true},
    {"meal1Out", "MEAL 1 OUT", 444, 42, true},
    {"meal1In", "MEAL 1 IN", 486, 42, true},
    {"meal2Out", "MEAL 2 OUT", 528, 42, true},
    {"meal2In", "MEAL 2 IN", 570, 42, true},
    {"wrap", "WRAP", 612, 42, true},
    {"ndb", "NDB", 654, 32, true},
    {"workMode", "WORK MODE", 686, 70, true},
}};
inline constexpr double tableTop = 126, tableHeaderHeight = 20, rowHeight = 18;
inline constexpr int rowsPerPage = 20;
inline constexpr double tableBottom = tableTop + tableHeaderHeight + rowsPerPage * rowHeight;  // 506

// The foot: notes, the department head's name and signature, and the page number.
inline constexpr Box notes{"notes", "NOTES", 36, 514, 420, 62};
inline constexpr Box departmentHead{"departmentHead", "DEPARTMENT HEAD", 456, 514, 150, 62};
inline constexpr Box signature{"signature", "APPROVED BY DEPARTMENT HEAD (SIGNATURE)", 606, 514, 150, 62};
inline constexpr Box pageNumber{"page", "", 636, 30, 120, 20};
inline constexpr double notesSize = 8;

inline constexpr std::string_view title = "DAILY TIME SHEET";
inline constexpr std::string_view fontFamily = "Nimbus Sans, Liberation Sans, Helvetica";

}  // namespace tessel::builtin_form
