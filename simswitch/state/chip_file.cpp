/*
 * chip_file.cpp: chip.db. Beside it: chip_tables.h, what stands in it.
 */
#include "state/chip_file.h"

#include "state/chip_tables.h"
#include "state/file.h"

#include <fmt/format.h>

namespace simswitch::state
{

namespace
{

/** Goes up with each change of a table. */
constexpr int VERSION = 2;

std::string chip_name(chip::Kind kind)
{
    // "a Trident"
    return std::string(chip::kind_name(kind).substr(2));
}

} // namespace

/** The open file and its tables. */
struct ChipFile::Open {
    Open(Folder &folder, chip::Chip &chip, fwm::Wrappers &wrappers, fwm::HostState &host)
        : folder(folder), chip(chip), wrappers(wrappers),
          file(&folder, Database::chip, VERSION, chip_definitions(chip, wrappers, host)),
          chip_tables(open_chip_tables(file, chip)),
          host_tables(open_host_tables(file, wrappers, host))
    {
    }

    template <class Do> void each(Do action)
    {
        for (const auto *tables : {&chip_tables, &host_tables}) {
            for (const auto &table : *tables) {
                action(*table);
            }
        }
    }
    void write_meta()
    {
        file.set_meta("chip", chip_name(chip.kind()));
        for (const auto &[name, field] : chip::limit_fields()) {
            file.set_meta(name, std::to_string(chip.limits().*field));
        }
    }
    void check_meta();

    Folder &folder;
    chip::Chip &chip;
    fwm::Wrappers &wrappers;
    File file;
    SavedTables chip_tables;
    SavedTables host_tables;
};

void ChipFile::Open::check_meta()
{
    const std::string asked = chip_name(chip.kind());
    const std::string found = sqlite::printable(file.meta("chip"));
    if (found != asked) {
        const std::string text =
            fmt::format("{}: holds the state of a {}, and a {} was asked for; ask for a {}, or "
                        "name another folder",
                        folder.path().string(), found, asked, found);
        for (const chip::Kind kind : {chip::Kind::trident, chip::Kind::trident2}) {
            if (found == chip_name(kind)) {
                throw OtherChip(text, kind);
            }
        }
        throw Error(text);
    }
    for (const auto &[name, field] : chip::limit_fields()) {
        const std::string size = sqlite::printable(file.meta(name));
        if (size != std::to_string(chip.limits().*field)) {
            throw Error(fmt::format("{}: its chip was made with {} = {}, and {} was asked for; ask "
                                    "for {}, or name another folder",
                                    folder.path().string(), name, size, chip.limits().*field,
                                    size));
        }
    }
}

ChipFile::ChipFile(Folder &folder, chip::Chip &chip, fwm::Wrappers &wrappers, fwm::HostState &host)
    : open_(std::make_unique<Open>(folder, chip, wrappers, host))
{
    if (!is_new()) {
        load();
    }
    open_->file.accept();
    open_->each([&](SavedTable &table) { table.watch(changed_); });
}

ChipFile::~ChipFile() = default;

bool ChipFile::is_new() const
{
    return open_->file.is_new();
}

void ChipFile::load()
{
    open_->check_meta();
    for (const auto &table : open_->chip_tables) {
        table->load();
    }
    if (const Outcome outcome = open_->chip.check(); !outcome.ok()) {
        throw open_->file.damaged(outcome.reason);
    }
    // The host's tables stand over what its caches take from the chip.
    open_->wrappers.rebuild_caches();
    for (const auto &table : open_->host_tables) {
        table->load();
    }
}

void ChipFile::write()
{
    // After a failure the folder takes nothing more, so that nothing need be noted either.
    changed_ = false;
    try {
        open_->file.commit([this] {
            if (is_new()) {
                open_->write_meta();
            }
            open_->each([](SavedTable &table) { table.save(); });
        });
    } catch (const std::exception &) {
        // The folder remembers why.
    }
    open_->each([](SavedTable &table) { table.forget(); });
}

} // namespace simswitch::state
