// Reading the rig's result tables: one or several runs in a file, each with its head, heading, name lines and rows.
#pragma once

#include "figure.h"

#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// One row as it stands in the file.
struct TableRow {
    long long number = 0; ///< line of the file, from 1
    Figure figure;
    std::vector<std::string> cells; ///< parameter cells with the heading's names, empty where the table has "-"
    bool hot = false;               ///< marked in the column "Interest"
};

/// The names of a test's parameters by column; columns without a parameter are empty.
struct TableNames {
    std::string function;
    std::vector<std::string> columns;
};

/// One run of the rig. A file to which the rig added its rows holds several.
struct TableRun {
    long long firstLine = 0;
    std::string processor; ///< with the clock rate, as the rig tells it
    std::string system;
    std::string computer;
    std::vector<std::string> libraries;
    std::string start;                ///< calendar time of the start
    double megahertz = 0;             ///< clock rate of the head; 0 if it tells none
    std::vector<std::string> columns; ///< names of the parameter columns in the heading
    std::vector<TableNames> names;    ///< name lines (-q, -q+), in order
    std::vector<TableRow> rows;
    bool cutOff = false; ///< the last row is not whole: the run was ended while it was written
};

struct Table {
    std::string file;
    std::vector<TableRun> runs;
    size_t rows() const;
};

/// Reads a table and, if it has no name lines of its own, the name table beside it (NAME_name.csv for NAME.csv).
/// Without any names parameters are called by the heading ("Len/Size", "Parm1").
///
/// In the figures: clocks per call come from the time and the head's clock rate (three digits); clocks per element are
/// the table's own and the better ones for ratios. Both are 0 in a row for which the rig has no figure.
///
/// Throws Fault with file and line for anything that no rig writes. A row that is cut off at the end of a run is no
/// fault: it is left out and marked.
Table readTable(const std::string& file);
/// The same for text; `file` is for messages. Nothing else is read.
Table parseTable(const std::string& file, std::string_view text);
/// True for a word in brackets: a remark of the test, such as (decimate), and no value of a parameter.
bool isRemark(std::string_view cell);
/// Gives the rows of a table the names of another one.
void applyNames(Table& table, const std::vector<TableNames>& names);

} // namespace krlab
