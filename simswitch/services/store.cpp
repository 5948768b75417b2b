/*
 * store.cpp: the store's file and the platform's store functions. Beside it:
 * store_rows.cpp, the columns.
 */
#include "services/store.h"

#include "journal/call.h"
#include "services/store_rows.h"
#include "services/tree.h"
#include "switch.h"

#include <fwmpd/platform.h>
#include <fwmpd/pss.h>

#include <algorithm>
#include <fmt/format.h>
#include <system_error>

using simswitch::Call;
using simswitch::ERROR_PARAM;
using simswitch::Layer;
using simswitch::Outcome;
using simswitch::Switch;
using simswitch::Word;

unsigned char fwmpd_global_config[simswitch::services::GLOBAL_CONFIG_BYTES] = {};

namespace simswitch::services
{

namespace
{

constexpr int ERROR_STORE = -1;

sqlite::Database open_database(const std::filesystem::path &state_dir)
{
    std::error_code error;
    if (!state_dir.empty() && !std::filesystem::create_directories(state_dir, error) && error) {
        throw sqlite::Error(
            fmt::format("{}: can't make the folder: {}", state_dir.string(), error.message()));
    }
    sqlite::Database database(state_dir.empty() ? state_dir : state_dir / "store.sqlite");
    database.run(store_schema());
    return database;
}

/** Runs a write; what SQLite refuses becomes an outcome. */
template <class Body> Outcome write(Body &&body)
{
    try {
        body();
        return {};
    } catch (const sqlite::Error &error) {
        return {ERROR_STORE, error.what()};
    }
}

} // namespace

/** The open file with the statements of the writers. */
struct Store::Open {
    explicit Open(const std::filesystem::path &state_dir) : database(open_database(state_dir)) {}

    sqlite::Statement prepare(const std::string &text) { return {database, text}; }

    /** Takes members and row of an interface away. */
    void erase(std::uint32_t ifindex)
    {
        erase_members.bind(ifindex).run();
        erase_row.bind(ifindex).run();
    }

    sqlite::Database database;
    sqlite::Statement erase_members = prepare("DELETE FROM l3port_member WHERE ifindex = ?");
    sqlite::Statement erase_row = prepare("DELETE FROM l3port WHERE ifindex = ?");
    sqlite::Statement write_row = prepare(l3port_replace());
    sqlite::Statement write_member = prepare("INSERT INTO l3port_member VALUES (?, ?, ?)");
    sqlite::Statement write_config = prepare("REPLACE INTO global_config VALUES (1, ?)");
};

Store::Store(std::filesystem::path state_dir) : state_dir_(std::move(state_dir)) {}

Store::~Store() = default;

Store::Open &Store::open()
{
    if (!open_) {
        open_ = std::make_unique<Open>(state_dir_);
    }
    return *open_;
}

Outcome Store::store_interface(const l3lif &lif)
{
    return write([&] {
        Open &file = open();
        sqlite::Transaction transaction(file.database);
        file.erase(lif.ifindex);
        bind_l3port(file.write_row, lif);
        file.write_row.run();
        std::int64_t place = 0;
        if (lif.pc_member_tree != nullptr) {
            for (const void *record : tree_records(lif.pc_member_tree)) {
                const auto ifindex = *static_cast<const std::uint32_t *>(record);
                file.write_member.bind(lif.ifindex).bind(place++).bind(ifindex).run();
            }
        }
        transaction.commit();
    });
}

Outcome Store::delete_interface(std::uint32_t ifindex)
{
    return write([&] {
        Open &file = open();
        sqlite::Transaction transaction(file.database);
        file.erase(ifindex);
        transaction.commit();
    });
}

Outcome Store::store_global_config(const unsigned char *config)
{
    if (config == nullptr) {
        return {ERROR_PARAM, "no configuration given"};
    }
    return write([&] { open().write_config.bind(std::span(config, GLOBAL_CONFIG_BYTES)).run(); });
}

std::vector<StoredInterface> Store::stored_interfaces()
{
    std::vector<StoredInterface> rows;
    auto select = open().prepare(l3port_select());
    while (select.step()) {
        rows.push_back(read_l3port(select));
    }
    auto members =
        open().prepare("SELECT member FROM l3port_member WHERE ifindex = ? ORDER BY place");
    for (StoredInterface &row : rows) {
        members.bind(row.ifindex);
        while (row.members && members.step()) {
            row.members->push_back(static_cast<std::uint32_t>(members.integer(0)));
        }
        members.reset();
    }
    return rows;
}

std::optional<StoredInterface> Store::stored_interface(std::uint32_t ifindex)
{
    for (StoredInterface &row : stored_interfaces()) {
        if (row.ifindex == ifindex) {
            return std::make_optional(std::move(row));
        }
    }
    return std::nullopt;
}

std::optional<GlobalConfig> Store::global_config()
{
    auto select = open().prepare("SELECT bytes FROM global_config WHERE id = 1");
    if (!select.step()) {
        return std::nullopt;
    }
    GlobalConfig config{};
    const auto bytes = select.bytes(0);
    std::copy_n(bytes.begin(), std::min(bytes.size(), config.size()), config.begin());
    return config;
}

} // namespace simswitch::services

namespace
{

/** The word for a handle of the store in the journal. */
Word word_for_context(const void *context)
{
    if (context == nullptr) {
        return {"null"};
    }
    return {context == Switch::current().store.context() ? "store" : "record"};
}

Word word_for_config(const unsigned char *config)
{
    if (config == nullptr) {
        return {"null"};
    }
    return {config == fwmpd_global_config ? "config" : "record"};
}

/** Refuses a handle that isn't this store's. */
template <class Body> Outcome with_store(const void *context, Body &&body)
{
    auto &store = Switch::current().store;
    if (context != store.context()) {
        return {ERROR_PARAM, "the handle is not that of the store"};
    }
    return body(store);
}

} // namespace

extern "C" {

int rtifhal_pss_l3port_store(void *pss_context, int mode, struct l3lif *l3lif)
{
    Call call(Layer::store, __func__, word_for_context(pss_context), mode, l3lif);
    return call.run([&] {
        return with_store(pss_context, [&](auto &store) -> Outcome {
            if (l3lif == nullptr) {
                return {ERROR_PARAM, "no interface given"};
            }
            return store.store_interface(*l3lif);
        });
    });
}

int rtifhal_pss_l3port_delete(void *pss_context, int mode, uint32_t ifindex)
{
    Call call(Layer::store, __func__, word_for_context(pss_context), mode, ifindex);
    return call.run([&] {
        return with_store(pss_context,
                          [&](auto &store) { return store.delete_interface(ifindex); });
    });
}

int fwmpd_pss_globalc_store(void *pss_context, const unsigned char *config, int whole)
{
    Call call(Layer::store, __func__, word_for_context(pss_context), word_for_config(config),
              whole);
    return call.run([&] {
        return with_store(pss_context,
                          [&](auto &store) { return store.store_global_config(config); });
    });
}

} // extern "C"
