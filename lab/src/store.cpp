#include "store.h"

#include "fault.h"
#include "storestatement.h"

#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unordered_map>

namespace krlab {

namespace {

using nlohmann::json;

/// Another lab holds the store for the time of one pass's rows; this is longer than any machine needs for that.
constexpr int busyMilliseconds = 60000;

/// Tells whether a name still means the same file; 0 if there is none.
unsigned long long fileNumber(const std::string& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

constexpr const char* schema = R"(
CREATE TABLE run (
    id INTEGER PRIMARY KEY, command TEXT NOT NULL, arguments TEXT NOT NULL, seed INTEGER NOT NULL, label TEXT NOT NULL,
    started TEXT NOT NULL, ended TEXT NOT NULL DEFAULT '', status INTEGER NOT NULL DEFAULT -1);
CREATE TABLE identity (id INTEGER PRIMARY KEY, text TEXT NOT NULL UNIQUE);
CREATE TABLE pass (
    id INTEGER PRIMARY KEY, run INTEGER NOT NULL REFERENCES run, round INTEGER NOT NULL, subject TEXT NOT NULL,
    identity INTEGER NOT NULL REFERENCES identity, started TEXT NOT NULL, ended TEXT NOT NULL, load_start REAL NOT NULL,
    load_end REAL NOT NULL, complete INTEGER NOT NULL, figures INTEGER NOT NULL, tests TEXT NOT NULL);
CREATE INDEX pass_of_run ON pass (run);
CREATE TABLE line (
    id INTEGER PRIMARY KEY, text TEXT NOT NULL UNIQUE, function TEXT NOT NULL, family TEXT NOT NULL);
CREATE TABLE figure (
    pass INTEGER NOT NULL REFERENCES pass, line INTEGER NOT NULL REFERENCES line, clocks REAL NOT NULL,
    loops INTEGER NOT NULL, accuracy REAL NOT NULL, exact INTEGER NOT NULL, elements REAL NOT NULL, per_element REAL NOT NULL,
    unit TEXT NOT NULL, microseconds REAL NOT NULL, megaflops REAL NOT NULL, comment TEXT NOT NULL,
    PRIMARY KEY (pass, line)) WITHOUT ROWID;
)";

} // namespace

namespace {

/// Of an identity what stays the same from pass to pass; the rest stands in the pass's own columns.
std::string lastingText(const Identity& identity) {
    json text = toJson(identity);
    for (const char* key : {"started", "ended", "load_start", "load_end"}) {
        text.erase(key);
    }
    // Names of files in memory differ from process to process.
    for (json& word : text["arguments"]) {
        std::string argument = word;
        if (const size_t at = argument.find("/proc/self/fd/"); at != std::string::npos) {
            word = argument.substr(0, at) + "FILE";
        }
    }
    text["machine"].erase("counter_mhz");
    return text.dump();
}

std::string courseText(const Pass& pass) {
    json tests = json::array();
    for (const TestEnd& test : pass.tests) {
        tests.push_back({test.function, test.test, test.source, test.result, test.messages});
    }
    json ends = json::array();
    for (const ProcessEnd& end : pass.ends) {
        ends.push_back({static_cast<int>(end.how), end.status, end.signal, end.function, end.text});
    }
    return json{{"tests", std::move(tests)},
                {"ends", std::move(ends)},
                {"remarks", pass.remarks},
                {"counter_mhz", pass.identity.machine.counterMHz}} // What the rig echoes may be no UTF-8.
        .dump(-1, ' ', false, json::error_handler_t::replace);
}

void readCourse(const std::string& text, Pass& pass) {
    const json all = json::parse(text);
    for (const json& test : all.at("tests")) {
        pass.tests.push_back({test.at(0), test.at(1), test.at(2), test.at(3), test.at(4)});
    }
    for (const json& end : all.at("ends")) {
        pass.ends.push_back(
            {static_cast<ProcessEnd::How>(end.at(0).get<int>()), end.at(1), end.at(2), end.at(3), end.at(4)});
    }
    pass.remarks = all.at("remarks").get<std::vector<std::string>>();
    pass.identity.machine.counterMHz = all.at("counter_mhz");
}

/// A condition over passes, to be put behind WHERE. Labels and subjects are bound by the caller, in this order.
std::string condition(const PassFilter& filter) {
    std::string text = "1";
    const auto among = [&text](const char* column, const std::vector<long long>& numbers) {
        if (!numbers.empty()) {
            text += fmt::format(" AND {} IN ({})", column, fmt::join(numbers, ","));
        }
    };
    among("pass.run", filter.runs);
    among("pass.id", filter.passes);
    text += " AND (?1 = '' OR pass.subject = ?1) AND (?2 = '' OR pass.run IN (SELECT id FROM run WHERE label = ?2))";
    return text;
}

} // namespace

Store::Store(const std::string& file) : m_file(file) {
    // Whole paths, so that no name looks like the address by which a merge attaches a file.
    const int code = sqlite3_open_v2(std::filesystem::absolute(file).c_str(), &m_db,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI, nullptr);
    try {
        if (code != SQLITE_OK) {
            throw Fault(file, fmt::format("can't be opened as a store: {}", sqlite3_errmsg(m_db)));
        }
        sqlite3_busy_timeout(m_db, busyMilliseconds);
        prepare();
    } catch (...) {
        sqlite3_close(m_db);
        throw;
    }
}

Store::~Store() {
    sqlite3_close(m_db);
}

void Store::prepare() {
    const auto pragma = [this](const char* name) {
        Statement statement(*this, fmt::format("PRAGMA {}", name));
        return statement.step() ? statement.integer(0) : 0;
    };
    const auto isEmpty = [this] {
        Statement statement(*this, "SELECT count(*) FROM sqlite_master");
        statement.step();
        return statement.integer(0) == 0;
    };
    // Readers and one writer at once; a commit survives the end of the process and of the machine.
    Statement(*this, "PRAGMA journal_mode = WAL").run();
    Statement(*this, "PRAGMA synchronous = FULL").run();
    if (isEmpty()) {
        Transaction transaction(*this);
        // Another lab may have been quicker.
        if (isEmpty()) {
            if (sqlite3_exec(m_db, schema, nullptr, nullptr, nullptr) != SQLITE_OK) {
                throw Fault(m_file, fmt::format("can't be set up as a store: {}", sqlite3_errmsg(m_db)));
            }
            Statement(*this, fmt::format("PRAGMA application_id = {}", applicationId)).run();
            Statement(*this, fmt::format("PRAGMA user_version = {}", schemaVersion)).run();
        }
        transaction.commit();
    }
    m_fileNumber = fileNumber(m_file);
    if (pragma("application_id") != applicationId) {
        throw Fault(m_file, "this database is no store of krlab; name another file");
    }
    if (pragma("user_version") > schemaVersion) {
        throw Fault(m_file, "this store was written by a newer krlab; use that one, or another file");
    }
    // Stores of before the history have no such table.
    Statement(*this,
              "CREATE TABLE IF NOT EXISTS reference (pass INTEGER PRIMARY KEY REFERENCES pass, clocks REAL NOT NULL)")
        .run();
    // Nor those of before the fleet this one.
    Statement(*this, "CREATE TABLE IF NOT EXISTS fleet (run INTEGER PRIMARY KEY REFERENCES run, plan TEXT NOT NULL, "
                     "task INTEGER NOT NULL, setting TEXT NOT NULL, subjects TEXT NOT NULL, UNIQUE (plan, task))")
        .run();
}

long long Store::beginRun(const RunRecord& run) {
    Statement(*this, "INSERT INTO run (command, arguments, seed, label, started) VALUES (?, ?, ?, ?, ?)")
        .bind(run.command, json(run.arguments).dump(-1, ' ', false, json::error_handler_t::replace),
              static_cast<long long>(run.seed), run.label, run.started.empty() ? timeText() : run.started)
        .run();
    return sqlite3_last_insert_rowid(m_db);
}

void Store::endRun(long long run, int status) {
    Statement(*this, "UPDATE run SET ended = ?, status = ? WHERE id = ?").bind(timeText(), status, run).run();
}

long long Store::lineId(const Line& line) {
    const std::string text = line.text();
    if (const auto known = m_lines.find(text); known != m_lines.end()) {
        return known->second;
    }
    Statement(*this, "INSERT OR IGNORE INTO line (text, function, family) VALUES (?, ?, ?)")
        .bind(text, line.function, familyOf(line.function))
        .run();
    Statement find(*this, "SELECT id FROM line WHERE text = ?");
    find.bind(text).step();
    return m_lines[text] = find.integer(0);
}

long long Store::addPass(long long run, int round, const Pass& pass) {
    Transaction transaction(*this);
    const Identity& identity = pass.identity;
    const std::string lasting = lastingText(identity);
    Statement(*this, "INSERT OR IGNORE INTO identity (text) VALUES (?)").bind(lasting).run();
    Statement(*this, "INSERT INTO pass (run, round, subject, identity, started, ended, load_start, load_end, complete, "
                     "figures, tests) VALUES (?, ?, ?, (SELECT id FROM identity WHERE text = ?), ?, ?, ?, ?, ?, ?, ?)")
        .bind(run, round, identity.subject, lasting, identity.started, identity.ended, identity.loadStart,
              identity.loadEnd, pass.complete() ? 1 : 0, static_cast<long long>(pass.figures.size()), courseText(pass))
        .run();
    const long long id = sqlite3_last_insert_rowid(m_db);
    Statement insert(*this, "INSERT OR IGNORE INTO figure VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (const Figure& figure : pass.figures) {
        insert.bind(id, lineId(figure.line), figure.clocks, figure.loops, figure.accuracy, figure.exact ? 1 : 0,
                    figure.elements, figure.perElement, figure.unit, figure.microseconds, figure.megaflops,
                    figure.comment);
        insert.run();
    }
    transaction.commit();
    // The database would go on in a file that nobody finds again.
    if (fileNumber(m_file) != m_fileNumber) {
        throw Fault(m_file, "the store was moved or deleted while it was in use");
    }
    return id;
}

void Store::addReference(long long pass, double clocks) {
    Statement(*this, "INSERT OR REPLACE INTO reference (pass, clocks) VALUES (?, ?)").bind(pass, clocks).run();
}

std::vector<RunRecord> Store::runs() const {
    std::vector<RunRecord> runs;
    Statement rows(*this, "SELECT id, command, arguments, seed, label, started, ended, status FROM run ORDER BY id");
    while (rows.step()) {
        RunRecord run;
        run.id = rows.integer(0);
        run.command = rows.text(1);
        run.arguments = json::parse(rows.text(2)).get<std::vector<std::string>>();
        run.seed = static_cast<unsigned long>(rows.integer(3));
        run.label = rows.text(4);
        run.started = rows.text(5);
        run.ended = rows.text(6);
        run.status = static_cast<int>(rows.integer(7));
        runs.push_back(std::move(run));
    }
    return runs;
}

std::vector<PassRecord> Store::passes(const PassFilter& filter) const {
    std::vector<PassRecord> passes;
    std::map<long long, Identity> identities;
    Statement texts(*this, "SELECT id, text FROM identity");
    while (texts.step()) {
        identities[texts.integer(0)] = identityFromJson(json::parse(texts.text(1)));
    }
    Statement rows(*this, "SELECT id, run, round, subject, identity, started, ended, load_start, load_end, complete, "
                          "figures, (SELECT clocks FROM reference WHERE reference.pass = pass.id) FROM pass WHERE " +
                              condition(filter) + " ORDER BY id");
    rows.bind(filter.subject, filter.label);
    while (rows.step()) {
        PassRecord pass;
        pass.id = rows.integer(0);
        pass.run = rows.integer(1);
        pass.round = static_cast<int>(rows.integer(2));
        pass.subject = rows.text(3);
        pass.identity = identities[rows.integer(4)];
        pass.identity.started = rows.text(5);
        pass.identity.ended = rows.text(6);
        pass.identity.loadStart = rows.real(7);
        pass.identity.loadEnd = rows.real(8);
        pass.complete = rows.integer(9) != 0;
        pass.figures = rows.integer(10);
        pass.reference = rows.real(11);
        passes.push_back(std::move(pass));
    }
    return passes;
}

Pass Store::pass(long long id) const {
    PassFilter filter;
    filter.passes = {id};
    const std::vector<PassRecord> records = passes(filter);
    if (records.empty()) {
        throw Fault(m_file, fmt::format("there is no pass {}", id));
    }
    Pass pass;
    pass.identity = records.front().identity;
    Statement tests(*this, "SELECT tests FROM pass WHERE id = ?");
    tests.bind(id).step();
    readCourse(tests.text(0), pass);
    Statement rows(*this,
                   "SELECT line.text, clocks, loops, accuracy, exact, elements, per_element, unit, microseconds, "
                   "megaflops, comment FROM figure JOIN line ON line.id = figure.line WHERE pass = ? "
                   "ORDER BY figure.line");
    rows.bind(id);
    while (rows.step()) {
        Figure figure;
        figure.line = Line::parse(rows.text(0));
        figure.clocks = rows.real(1);
        figure.loops = rows.integer(2);
        figure.accuracy = rows.real(3);
        figure.exact = rows.integer(4) != 0;
        figure.elements = rows.real(5);
        figure.perElement = rows.real(6);
        figure.unit = rows.text(7);
        figure.microseconds = rows.real(8);
        figure.megaflops = rows.real(9);
        figure.comment = rows.text(10);
        pass.figures.push_back(std::move(figure));
    }
    return pass;
}

FigureTable Store::figures(const PassFilter& filter) const {
    FigureTable table;
    table.passes = passes(filter);
    std::unordered_map<long long, std::uint32_t> indexes;
    Statement lines(*this, "SELECT id, text FROM line");
    while (lines.step()) {
        indexes[lines.integer(0)] = static_cast<std::uint32_t>(table.lines.size());
        table.lines.push_back(Line::parse(lines.text(1)));
    }
    table.entries.resize(table.passes.size());
    for (size_t i = 0; i < table.passes.size(); ++i) {
        std::vector<FigureTable::Entry>& entries = table.entries[i];
        entries.reserve(static_cast<size_t>(table.passes[i].figures));
        Statement rows(*this, "SELECT line, clocks, accuracy FROM figure WHERE pass = ?");
        rows.bind(table.passes[i].id);
        while (rows.step()) {
            entries.push_back({indexes[rows.integer(0)], static_cast<float>(rows.real(2)), rows.real(1)});
        }
    }
    return table;
}

} // namespace krlab
