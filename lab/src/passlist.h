// The passes that the user names: runs in tables, or a selection of a store. Readings stand in little room, so that a
// store of thousands of passes can be held at once.
#pragma once

#include "figure.h"
#include "identity.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace krlab {

class PassList {
public:
    /// One line of one pass.
    struct Reading {
        std::uint32_t line;    ///< index into lines()
        float accuracy;        ///< agreement of the rig's successive measurements; negative if not told
        double clocks;         ///< per call
        double perElement = 0; ///< of a table: in its own digits; 0 if unknown
    };
    struct Entry {
        Identity identity;
        long long run = 0; ///< number in the store; 0 for a table
        std::string label;
        bool complete = true;
        bool exact = false;  ///< the readings come from whole counts
        bool counts = false; ///< the readings are instructions
        std::vector<Reading> readings;
    };

    /// Adds what `text` names: a table, several with commas between, a store (all its passes), STORE:SELECTION, or a
    /// SELECTION of the store `store`. A selection is the number of a run, NUMBER/SUBJECT, or a label. Throws Fault if
    /// it names nothing.
    void add(const std::string& text, const std::string& store);

    const std::vector<Line>& lines() const { return m_lines; }
    /// Elements that one call of the line handles; 0 if unknown.
    double elements(std::uint32_t line) const { return m_elements[line]; }
    const std::vector<Entry>& passes() const { return m_passes; }
    /// What the reader must know: a line each.
    const std::vector<std::string>& remarks() const { return m_remarks; }

    /// The identity of the one subject that all passes of a store measured. Throws Fault if there are several.
    const Identity& subject() const;
    /// What was added last, as the user named it.
    const std::string& text() const { return m_text; }
    /// True if the passes hold instructions. Throws Fault if some hold clocks.
    bool counts() const;
    /// Those of the passes for which `wanted` is true.
    PassList where(const std::function<bool(const Entry&)>& wanted) const;
    /// Adds all passes of another list.
    void add(const PassList& other);
    /// The readings as runs of figures, for comparisons.
    std::vector<std::vector<Figure>> runs() const;

private:
    void addTable(const std::string& file, const std::string& subject);
    void addStored(const std::string& file, const std::string& selection);
    std::uint32_t indexOf(const Line& line);

    std::vector<Line> m_lines;
    std::vector<double> m_elements;
    std::map<Line, std::uint32_t> m_index;
    std::vector<Entry> m_passes;
    std::vector<std::string> m_remarks;
    std::string m_text;
};

} // namespace krlab
