/*
 * store.cpp: the store's file and the platform's store functions. Beside it:
 * store_rows.cpp, the columns.
 */
#include "services/store.h"

#include "journal/call.h"
#include "services/store_rows.h"
#include "state/columns.h"
#include "state/file.h"
#include "switch.h"

#include <fwmpd/platform.h>
#include <fwmpd/pss.h>

#include <algorithm>
#include <fmt/format.h>

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

/** Goes up with each change of a table. */
constexpr int VERSION = 1;

/** Runs a write; what SQLite refuses becomes an outcome. */
template <class Body> Outcome write(Body &&body)
{
    try {
        body();
        return {};
    } catch (const std::runtime_error &error) {
        return {ERROR_STORE, error.what()};
    }
}

} // namespace

/** The open file with the statements of the writers. */
struct Store::Open {
    explicit Open(state::Folder *folder)
        : file(folder, state::Database::store, VERSION, store_tables())
    {
    }

    state::File file;
    sqlite::Statement erase_row = file.prepare("DELETE FROM l3port WHERE ifindex = ?");
    sqlite::Statement write_row = file.prepare(l3port_replace());
    sqlite::Statement write_config =
        file.prepare("REPLACE INTO global_config (id, bytes, sum) VALUES (?, ?, ?)");
};

Store::Store(state::Folder *folder) : folder_(folder)
{
    if (folder_ == nullptr) {
        return;
    }
    // All is read once, so that damage shows before anyone relies on the store.
    open();
    (void)stored_interfaces();
    (void)global_config();
    open_->file.accept();
}

Store::~Store() = default;

Store::Open &Store::open()
{
    if (!open_) {
        open_ = std::make_unique<Open>(folder_);
    }
    return *open_;
}

Outcome Store::store_interface(const l3lif &lif)
{
    return write([&] {
        Open &store = open();
        store.file.commit([&] {
            bind_l3port(store.write_row, lif);
            store.write_row.run();
        });
    });
}

Outcome Store::delete_interface(std::uint32_t ifindex)
{
    return write([&] {
        Open &store = open();
        store.file.commit([&] { store.erase_row.bind(ifindex).run(); });
    });
}

Outcome Store::store_global_config(const unsigned char *config)
{
    if (config == nullptr) {
        return {ERROR_PARAM, "no configuration given"};
    }
    return write([&] {
        Open &store = open();
        store.file.commit([&] {
            const std::span<const unsigned char> bytes(config, GLOBAL_CONFIG_BYTES);
            store.write_config.bind(1).bind(bytes).bind_sum().run();
        });
    });
}

Outcome Store::clear()
{
    return write([&] {
        Open &store = open();
        store.file.commit([&] {
            store.file.prepare("DELETE FROM l3port").run();
            store.file.prepare("DELETE FROM global_config").run();
        });
    });
}

std::vector<StoredInterface> Store::stored_interfaces()
{
    std::vector<StoredInterface> rows;
    state::File &file = open().file;
    auto select = file.prepare(l3port_select());
    while (select.step()) {
        try {
            rows.push_back(read_l3port(select));
        } catch (const state::BadValue &error) {
            throw file.damaged(
                fmt::format("table l3port, row {}: {}", rows.size() + 1, error.what()));
        }
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
    state::File &file = open().file;
    auto select = file.prepare("SELECT id, bytes, sum FROM global_config");
    if (!select.step()) {
        return std::nullopt;
    }
    GlobalConfig config{};
    const auto bytes = select.bytes(1);
    if (bytes.size() != config.size() || !select.sum_matches()) {
        throw file.damaged("table global_config: is not what was written to it");
    }
    std::copy(bytes.begin(), bytes.end(), config.begin());
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
