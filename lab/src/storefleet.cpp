// What a fleet needs of the store: tasks marked as such, copies, and the merging of many stores into one.
#include "storestatement.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace krlab {

using nlohmann::json;

namespace {

/// The address under which a file is attached for reading. Whoever wrote it is done: it needs neither locks, which
/// network file systems lend badly, nor files beside it.
std::string addressOf(const std::string& file) {
    std::string address = "file:";
    for (const char c : std::filesystem::absolute(file).string()) {
        address += c == '%' || c == '?' || c == '#' ? fmt::format("%{:02x}", static_cast<int>(c)) : std::string(1, c);
    }
    return address + "?mode=ro&immutable=1";
}

} // namespace

void Store::markFleet(const FleetRun& run) {
    Statement(*this, "INSERT INTO fleet (run, plan, task, setting, subjects) VALUES (?, ?, ?, ?, ?)")
        .bind(run.run, run.plan, run.task, run.setting, json(run.subjects).dump())
        .run();
}

std::vector<FleetRun> Store::fleetRuns() const {
    std::vector<FleetRun> runs;
    Statement rows(*this, "SELECT run, plan, task, setting, subjects FROM fleet ORDER BY run");
    while (rows.step()) {
        runs.push_back({rows.integer(0), rows.text(1), static_cast<int>(rows.integer(2)), rows.text(3),
                        json::parse(rows.text(4)).get<std::vector<std::string>>()});
    }
    return runs;
}

void Store::copyTo(const std::string& file) const {
    Statement(*this, "VACUUM INTO ?").bind(file).run();
}

/// Another store beside this one, for reading; its lines and those of this one by number.
class Store::Attached {
public:
    Attached(Store& store, const std::string& file) : m_store(store) {
        Statement(store, "ATTACH ? AS other").bind(addressOf(file)).run();
    }
    ~Attached() {
        for (const char* sql : {"DROP TABLE IF EXISTS temp.lines", "DETACH other"}) {
            sqlite3_exec(m_store.m_db, sql, nullptr, nullptr, nullptr);
        }
    }
    Attached(const Attached&) = delete;
    Attached& operator=(const Attached&) = delete;

    void check() const {
        Statement application(m_store, "PRAGMA other.application_id");
        Statement version(m_store, "PRAGMA other.user_version");
        if (!application.step() || application.integer(0) != applicationId) {
            throw Fault("this database is no store of krlab");
        }
        if (!version.step() || version.integer(0) > schemaVersion) {
            throw Fault("this store was written by a newer krlab; use that one");
        }
    }
    void matchLines() const {
        Statement(m_store, "INSERT OR IGNORE INTO main.line (text, function, family) "
                           "SELECT text, function, family FROM other.line ORDER BY id")
            .run();
        Statement(m_store, "CREATE TEMP TABLE lines (theirs INTEGER PRIMARY KEY, ours INTEGER NOT NULL)").run();
        Statement(m_store, "INSERT INTO temp.lines SELECT other.line.id, main.line.id FROM other.line "
                           "JOIN main.line ON main.line.text = other.line.text")
            .run();
    }

private:
    Store& m_store;
};

long long Store::runOfTask(long long theirs) {
    Statement known(*this, "SELECT ours.run FROM main.fleet ours JOIN other.fleet theirs "
                           "ON theirs.plan = ours.plan AND theirs.task = ours.task WHERE theirs.run = ?");
    if (known.bind(theirs).step()) {
        const long long run = known.integer(0);
        // What was merged before may not have been the whole task.
        Statement(*this, "UPDATE main.run SET (ended, status) = (SELECT ended, status FROM other.run WHERE id = ?1) "
                         "WHERE id = ?2 AND ended = ''")
            .bind(theirs, run)
            .run();
        return run;
    }
    Statement(*this, "INSERT INTO main.run (command, arguments, seed, label, started, ended, status) "
                     "SELECT command, arguments, seed, label, started, ended, status FROM other.run WHERE id = ?")
        .bind(theirs)
        .run();
    const long long run = sqlite3_last_insert_rowid(m_db);
    Statement(*this, "INSERT INTO main.fleet (run, plan, task, setting, subjects) "
                     "SELECT ?1, plan, task, setting, subjects FROM other.fleet WHERE run = ?2")
        .bind(run, theirs)
        .run();
    return run;
}

MergeCount Store::mergePasses(long long theirs, long long ours) {
    struct Wanted {
        long long id;
        long long identity;
    };
    std::vector<Wanted> wanted;
    Statement news(*this, "SELECT id, identity FROM other.pass theirs WHERE run = ?1 AND NOT EXISTS (SELECT 1 FROM "
                          "main.pass ours WHERE ours.run = ?2 AND ours.round = theirs.round AND ours.subject = "
                          "theirs.subject) ORDER BY id");
    news.bind(theirs, ours);
    while (news.step()) {
        wanted.push_back({news.integer(0), news.integer(1)});
    }
    Statement identity(*this,
                       "INSERT OR IGNORE INTO main.identity (text) SELECT text FROM other.identity WHERE id = ?");
    Statement pass(
        *this, "INSERT INTO main.pass (run, round, subject, identity, started, ended, load_start, load_end, "
               "complete, figures, tests) SELECT ?1, round, subject, (SELECT ours.id FROM main.identity ours JOIN "
               "other.identity theirs ON theirs.text = ours.text WHERE theirs.id = ?2), started, ended, load_start, "
               "load_end, complete, figures, tests FROM other.pass WHERE id = ?3");
    Statement figures(*this, "INSERT INTO main.figure SELECT ?1, lines.ours, clocks, loops, accuracy, exact, elements, "
                             "per_element, unit, microseconds, megaflops, comment FROM other.figure "
                             "JOIN temp.lines ON lines.theirs = line WHERE pass = ?2");
    MergeCount count;
    for (const Wanted& one : wanted) {
        identity.bind(one.identity).run();
        pass.bind(ours, one.identity, one.id).run();
        const long long id = sqlite3_last_insert_rowid(m_db);
        figures.bind(id, one.id).run();
        ++count.passes;
        count.figures += sqlite3_changes(m_db);
    }
    return count;
}

MergeCount Store::merge(const std::string& file) {
    try {
        const Attached attached(*this, file);
        attached.check();
        std::vector<long long> runs;
        Statement tasks(*this, "SELECT run FROM other.fleet ORDER BY run");
        while (tasks.step()) {
            runs.push_back(tasks.integer(0));
        }
        MergeCount all;
        Transaction transaction(*this);
        attached.matchLines();
        for (const long long run : runs) {
            const MergeCount count = mergePasses(run, runOfTask(run));
            all.passes += count.passes;
            all.figures += count.figures;
        }
        transaction.commit();
        return all;
    } catch (const Fault& fault) {
        throw Fault(file, fmt::format("can't be merged into {}: {}", m_file, fault.what()));
    }
}

} // namespace krlab
