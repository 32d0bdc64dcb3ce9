// The table of the library's functions, vek/functions.txt, whose first lines tell its form: read for the document that
// is made from it, and for the tests that hold it against headers and test programs.
#pragma once

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

/// All rows in their order.
std::vector<Row> rowsOf(const std::vector<Section>& table);

/// The document, in Markdown.
std::string document(const std::vector<Section>& table);

} // namespace library
