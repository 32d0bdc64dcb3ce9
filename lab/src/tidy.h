// The rig's tables as data: one record a row, with named parameters, in the forms that other tools read.
#pragma once

#include "summary.h"
#include "table.h"

#include <string>
#include <vector>

namespace krlab {

/// One row with all that is known of it.
struct TidyRecord {
    std::string file;
    size_t run = 0;    ///< number of the run in all files, from 1
    long long row = 0; ///< line of the file
    const TableRun* head = nullptr;
    const Figure* figure = nullptr;
    std::string result; ///< of its test, from the summary beside the table; empty if there is none
};

/// The rows of all tables in their order. The tables must outlive the records. `summaries` are those of NAME_sum.csv
/// beside each table, one entry a table, empty where there is none.
std::vector<TidyRecord> tidyRecords(const std::vector<Table>& tables,
                                    const std::vector<std::vector<SummaryRun>>& summaries);

/// Comma-separated with a heading; texts that hold commas or quotes stand in quotes (RFC 4180).
std::string tidyCsv(const std::vector<TidyRecord>& records);
/// { "schema": "krlab-tidy-1", "runs": [...], "rows": [...] }
std::string tidyJson(const std::vector<TidyRecord>& records);
/// The JSON that tools made for Google Benchmark read; a line of several runs is one benchmark with repetitions.
std::string tidyBenchmark(const std::vector<TidyRecord>& records);
/// A store with one pass a run, as `krlab run` writes them.
void tidyStore(const std::vector<TidyRecord>& records, const std::string& file);

} // namespace krlab
