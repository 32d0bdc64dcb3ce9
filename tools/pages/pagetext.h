// Text in the forms that the pages need: roff, and words of the three shells.
#pragma once

#include <string>
#include <vector>

namespace pages {

using Texts = std::vector<std::string>;

/// The parts of a text that a separator ends.
Texts split(const std::string& text, char separator);
/// The lines of a text, without their ends.
Texts linesOf(const std::string& text);

/// Text that roff shows as it is, also at the start of a line.
std::string roff(const std::string& text);
/// Lines that roff does not fill.
std::string roffLines(const std::string& text);
/// The same, indented under the paragraph before them; nothing for an empty text.
std::string roffBlock(const std::string& text);
/// A paragraph with a bold head: .TP.
std::string roffEntry(const std::string& head, const std::string& text);

/// One word for bash and zsh.
std::string quoted(const std::string& word);
/// One word for fish.
std::string fishQuoted(const std::string& word);
/// The words, each quoted, a blank between two.
std::string quotedList(const Texts& words);
std::string fishQuotedList(const Texts& words);

} // namespace pages
