// What is measured on one line: a function with one set of named parameter values, and its text form.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// Behind the name of a parameter whose test has another one of the same name before it.
inline constexpr std::string_view secondMark = " (2)";

/// One named value. The rig's names may hold blanks ("lenght Dst"); values are kept as text.
struct Parameter {
    std::string name;
    std::string value;
    // NOLINTNEXTLINE(modernize-use-nullptr): the comparison's own zero
    auto operator<=>(const Parameter&) const = default;
};

/// The identity of a line. Two lines are the same if function and all parameters are, in their order.
///
/// Text form: `veksAutoCorr_16s32s lenght=160 "lenght Dst"=9`. A name or a value that is empty or holds a blank, a
/// quote, a backslash or "=" stands in quotes, with a backslash before each quote and backslash in it.
struct Line {
    std::string function; ///< the whole name, such as veksDotProd_16s32s_Sfs
    std::vector<Parameter> parameters;

    // NOLINTNEXTLINE(modernize-use-nullptr): the comparison's own zero
    auto operator<=>(const Line&) const = default;
    std::string text() const;
    /// The value of a parameter, or nothing.
    const std::string* value(std::string_view name) const;
    /// The opposite of text(). Throws Fault for a text that is no line.
    static Line parse(std::string_view text);
};

/// The family of a function, the word behind the base name: "G729" of veksLSPQuant_G729_16s, "common" without one.
/// Types (16s32s), the library's prefix and descriptors (Sfs, I) are not part of it.
std::string familyOf(std::string_view function);

/// Number of single-letter edits between two words; upper and lower case count as half way (2 for a letter, 1 for
/// case).
int wordDistance(std::string_view a, std::string_view b);
/// The word of `words` nearest to `wanted`, or empty if none is near enough to be meant.
std::string nearestWord(std::string_view wanted, const std::vector<std::string>& words);
/// What a message adds on a name that nothing has: "; do you mean 'lenght'?", or nothing if none is near.
std::string proposal(const std::string& wanted, const std::vector<std::string>& words);

} // namespace krlab
