// The store of passes: one SQLite file. A pass is written in one transaction, so that a killed lab loses the pass in
// work at most; several labs may write to one store at once.
#pragma once

#include "pass.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

struct sqlite3;

namespace krlab {

/// One use of the lab that writes passes: all passes of one `run` or `ab` belong together.
struct RunRecord {
    long long id = 0;
    std::string command;                ///< run, ab, history ...
    std::vector<std::string> arguments; ///< of the lab
    unsigned long seed = 0;
    std::string label; ///< commit or other name that the user gives
    std::string started;
    std::string ended; ///< empty if it was killed
    int status = -1;   ///< exit status, -1 if it was killed
};

/// What the store knows of one pass besides its figures.
struct PassRecord {
    long long id = 0;
    long long run = 0;
    int round = 0;       ///< as given to addPass
    std::string subject; ///< its name
    Identity identity;
    bool complete = false;
    long long figures = 0;
    double reference = 0; ///< as given to addReference; 0 if it was not
};

/// Which passes are wanted. Empty members do not restrict.
struct PassFilter {
    std::vector<long long> runs;
    std::vector<long long> passes;
    std::string subject;
    std::string label;
};

/// A run that is one task of a fleet: the same task measured again has the same plan and number.
struct FleetRun {
    long long run = 0; ///< its number in this store
    std::string plan;  ///< the job folder's own identity
    int task = 0;
    std::string setting;               ///< name of its setting in the plan
    std::vector<std::string> subjects; ///< of the plan, in its order
};

/// What a merge brought.
struct MergeCount {
    size_t passes = 0;
    long long figures = 0;
};

/// Figures of many passes in little room: lines and passes by index.
struct FigureTable {
    struct Entry {
        std::uint32_t line; ///< index into `lines`
        float accuracy;     ///< negative if not told
        double clocks;
    };
    std::vector<Line> lines;
    std::vector<PassRecord> passes;
    std::vector<std::vector<Entry>> entries; ///< for each pass
};

class Store {
public:
    /// Opens or creates the file. Throws Fault if it is no store of this program or can't be written.
    explicit Store(const std::string& file);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /// Notes the start of a run and returns its number.
    long long beginRun(const RunRecord& run);
    void endRun(long long run, int status);
    /// Writes a whole pass; returns its number. Throws Fault if it can't be written or the file is gone. `round` tells
    /// which passes were measured beside each other.
    long long addPass(long long run, int round, const Pass& pass);

    /// Keeps what the reference kernel took around a pass.
    void addReference(long long pass, double clocks);

    /// Marks a run as a task of a fleet; `run` is that of beginRun.
    void markFleet(const FleetRun& run);
    /// The runs that are tasks of a fleet, in the order in which they came.
    std::vector<FleetRun> fleetRuns() const;
    /// Takes over the fleet passes of another store that are not here yet: a pass is known by its plan, task, round and
    /// subject. Nothing of the other file is locked or written. All of them or, where it throws Fault, none.
    MergeCount merge(const std::string& file);
    /// Writes a copy of the whole store into a new file that nothing else belongs to.
    void copyTo(const std::string& file) const;

    std::vector<RunRecord> runs() const;
    std::vector<PassRecord> passes(const PassFilter& filter = {}) const;
    /// A whole pass as it was written: all members of the figures, the tests and how the processes ended.
    Pass pass(long long id) const;
    /// The figures of many passes, for comparisons.
    FigureTable figures(const PassFilter& filter = {}) const;

private:
    class Statement;
    class Transaction;
    class Attached;
    void prepare();
    long long runOfTask(long long theirs);
    MergeCount mergePasses(long long theirs, long long ours);
    long long lineId(const Line& line);

    std::string m_file;
    sqlite3* m_db = nullptr;
    unsigned long long m_fileNumber = 0;
    std::unordered_map<std::string, long long> m_lines; ///< numbers of the lines that were written
};

} // namespace krlab
