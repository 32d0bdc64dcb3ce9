// Statements and transactions of the store, for the files in which its members stand.
#pragma once

#include "fault.h"
#include "store.h"

#include <fmt/format.h>
#include <sqlite3.h>

namespace krlab {

inline constexpr int applicationId = 0x6b726c62; // "krlb"
inline constexpr int schemaVersion = 1;

/// A prepared statement; every failure becomes a Fault with the store's file.
class Store::Statement {
public:
    Statement(const Store& store, const std::string& sql) : m_store(store) {
        check(sqlite3_prepare_v2(store.m_db, sql.c_str(), -1, &m_statement, nullptr));
    }
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    template <typename... Values>
    Statement& bind(const Values&... values) {
        int index = 0;
        (bindOne(++index, values), ...);
        return *this;
    }
    /// True with a row, false at the end.
    bool step() {
        const int code = sqlite3_step(m_statement);
        if (code != SQLITE_ROW && code != SQLITE_DONE) {
            check(code);
        }
        return code == SQLITE_ROW;
    }
    void run() {
        step();
        sqlite3_reset(m_statement);
    }
    long long integer(int column) const { return sqlite3_column_int64(m_statement, column); }
    double real(int column) const { return sqlite3_column_double(m_statement, column); }
    std::string text(int column) const {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
        return text == nullptr ? "" : std::string(text, static_cast<size_t>(sqlite3_column_bytes(m_statement, column)));
    }

private:
    void check(int code) const {
        if (code != SQLITE_OK) {
            throw Fault(m_store.m_file, fmt::format("the store fails: {}", sqlite3_errmsg(m_store.m_db)));
        }
    }
    void bindOne(int index, const std::string& value) {
        check(sqlite3_bind_text(m_statement, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT));
    }
    void bindOne(int index, double value) { check(sqlite3_bind_double(m_statement, index, value)); }
    void bindOne(int index, long long value) { check(sqlite3_bind_int64(m_statement, index, value)); }
    void bindOne(int index, int value) { bindOne(index, static_cast<long long>(value)); }

    const Store& m_store;
    sqlite3_stmt* m_statement = nullptr;
};

/// Undone unless it is committed.
class Store::Transaction {
public:
    explicit Transaction(Store& store) : m_store(store) { Statement(store, "BEGIN IMMEDIATE").run(); }
    ~Transaction() {
        if (m_open) {
            sqlite3_exec(m_store.m_db, "ROLLBACK", nullptr, nullptr, nullptr);
            m_store.m_lines.clear();
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit() {
        Statement(m_store, "COMMIT").run();
        m_open = false;
    }

private:
    Store& m_store;
    bool m_open = true;
};

} // namespace krlab
