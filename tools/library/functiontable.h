// The table of the library's functions, vek/functions.txt, whose first lines tell its form: read for the document that
// is made from it, and for the tests that hold it against headers and test programs.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace library {

/// One way in which a function is verified, or a note.
struct Claim {
    std::string kind; ///< exact, reference, property or note
    std::string text;
    std::vector<std::string> tests; ///< Suite.Name; none for a note
};

/// Functions that share a row.
struct Row {
    std::vector<std::string> functions;
    std::string source;
    std::vector<Claim> claims;

    /// The strongest kind among the claims: exact before reference before property.
    std::string verifiedBy() const;
};

/// A piece of the document: text, or rows that follow each other.
struct Section {
    std::string text;
    std::vector<Row> rows;
};

/// Throws std::runtime_error with the line's number for a line that is none of the form, and for a row without a claim.
std::vector<Section> readTable(const std::string& text);

/// What bench/peers.py measured on one machine.
struct Figures {
    std::string file;               ///< its name in bench/figures
    std::string name;               ///< family and model, the head of the column
    std::vector<std::string> lines; ///< machine, kernels, packages, readings and summary, as the file has them
    std::map<std::string, std::string> ratios; ///< clocks of a function to the peer's, by its name
};

/// Reads a file of figures. Throws std::runtime_error with its name for one that is none.
Figures readFigures(const std::string& file, const std::string& text);

/// The files of figures in a folder, by name; none if there is no such folder.
std::vector<Figures> readFiguresOf(const std::string& folder);

/// All rows in their order.
std::vector<Row> rowsOf(const std::vector<Section>& table);

/// The document, in Markdown, with a column for each machine.
std::string document(const std::vector<Section>& table, const std::vector<Figures>& machines);

} // namespace library
