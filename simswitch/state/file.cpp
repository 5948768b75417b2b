/*
 * file.cpp: opening, checking and writing a database of the state folder.
 */
#include "state/file.h"

#include <algorithm>
#include <fmt/format.h>

namespace simswitch::state
{

namespace
{

constexpr const char *META_TABLE =
    "CREATE TABLE meta (name TEXT PRIMARY KEY, value TEXT NOT NULL, sum INTEGER NOT NULL) "
    "WITHOUT ROWID, STRICT";
constexpr const char *COMMITS_TABLE =
    "CREATE TABLE commits (id INTEGER PRIMARY KEY, count INTEGER NOT NULL) STRICT";

std::vector<std::string> with_own(std::vector<std::string> tables)
{
    tables.emplace_back(META_TABLE);
    tables.emplace_back(COMMITS_TABLE);
    std::sort(tables.begin(), tables.end());
    return tables;
}

/** A file that was written to must be there; SQLite would make an empty one in its place. */
sqlite::Database open_database(const Folder *folder, Database which)
{
    if (folder == nullptr) {
        return sqlite::Database({});
    }
    const auto file = folder->file(which);
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (folder->commits(which) != 0 && (error || size == 0)) {
        throw folder->damaged(
            fmt::format("{}: is {}", file.filename().string(), error ? "missing" : "empty"));
    }
    folder->secure(which);
    return sqlite::Database(file);
}

} // namespace

File::File(Folder *folder, Database database, int version, std::vector<std::string> tables)
    : folder_(folder), which_(database), version_(version),
      database_(open_database(folder, database))
{
    tables = with_own(std::move(tables));
    if (folder_ == nullptr) {
        make(tables);
    } else {
        check(tables);
    }
    begin_.emplace(database_, "BEGIN IMMEDIATE");
    count_.emplace(database_, "UPDATE commits SET count = ? WHERE id = 1");
    commit_.emplace(database_, "COMMIT");
    rollback_.emplace(database_, "ROLLBACK");
}

std::string File::meta(const std::string &name)
{
    auto select = prepare("SELECT name, value, sum FROM meta WHERE name = ?");
    if (!select.bind(name).step()) {
        throw damaged(fmt::format("table meta: has no row {}", name));
    }
    if (!select.sum_matches()) {
        throw damaged(fmt::format("table meta, row {}: is not what was written to it", name));
    }
    return select.text(1);
}

void File::set_meta(const std::string &name, const std::string &value)
{
    prepare("REPLACE INTO meta VALUES (?, ?, ?)").bind(name).bind(value).bind_sum().run();
}

Error File::damaged(std::string_view what) const
{
    if (folder_ == nullptr) {
        return Error(std::string(what));
    }
    return folder_->damaged(fmt::format("{}: {}", folder_->file(which_).filename().string(), what));
}

void File::accept()
{
    database_.tidy_at_close();
}

void File::make(const std::vector<std::string> &tables)
{
    database_.run("BEGIN IMMEDIATE");
    for (const std::string &table : tables) {
        database_.run(table);
    }
    database_.run("INSERT INTO commits VALUES (1, 0)");
    set_meta("version", std::to_string(version_));
    database_.run("COMMIT");
}

void File::check(const std::vector<std::string> &tables)
{
    check_integrity();
    std::vector<std::string> found;
    auto select = prepare("SELECT sql FROM sqlite_schema ORDER BY sql");
    while (select.step()) {
        found.push_back(select.text(0));
    }
    if (found.empty() && folder_->commits(which_) == 0) {
        make(tables);
        return;
    }
    if (!std::ranges::binary_search(found, std::string(META_TABLE))) {
        throw damaged("is no file of this switch: it has no table meta");
    }
    const std::string version = meta("version");
    if (version != std::to_string(version_)) {
        throw Error(fmt::format("{}: was made by another version of the switch (version {} of the "
                                "tables, this one has {}); use that one, or remove the folder to "
                                "begin with an empty switch",
                                folder_->file(which_).string(), sqlite::printable(version),
                                version_));
    }
    if (found != tables) {
        throw damaged("its tables are not those that were made");
    }
    check_commits();
}

void File::check_integrity()
{
    if (database_.is_read_only()) {
        database_.fail("can only be read");
    }
    auto select = prepare("PRAGMA integrity_check(1)");
    const std::string answer = select.step() ? select.text(0) : "no answer";
    if (answer != "ok") {
        throw damaged(sqlite::printable(answer));
    }
}

void File::check_commits()
{
    auto select = prepare("SELECT count FROM commits WHERE id = 1");
    commits_ = select.step() ? static_cast<std::uint64_t>(select.integer(0)) : 0;
    const std::uint64_t noted = folder_->commits(which_);
    // The end of the process may have come between the two.
    if (commits_ != noted && commits_ != noted + 1) {
        throw damaged(fmt::format("has {} of the {} transactions that it took", commits_, noted));
    }
}

void File::begin()
{
    if (folder_ != nullptr && !folder_->failure().empty()) {
        throw sqlite::Error(folder_->failure());
    }
    try {
        begin_->run();
    } catch (const sqlite::Error &error) {
        undo(error.what());
        throw;
    }
}

void File::end()
{
    count_->bind(static_cast<std::int64_t>(commits_ + 1)).run();
    commit_->run();
    ++commits_;
    if (folder_ != nullptr) {
        folder_->note_commits(which_, commits_);
    }
}

void File::undo(std::string_view reason)
{
    try {
        rollback_->run();
    } catch (const sqlite::Error &) {
        // SQLite has rolled back by itself, or there was no transaction to begin with.
    }
    if (folder_ != nullptr) {
        folder_->fail(reason);
    }
}

} // namespace simswitch::state
