/*
 * store_rows.cpp: the columns of the table l3port, one for each field.
 */
#include "services/store_rows.h"

#include "services/tree.h"
#include "state/columns.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <iterator>
#include <type_traits>

namespace simswitch::services
{

namespace
{

/** A column that holds a whole number of a record. */
template <class Record> struct Column {
    const char *name;
    std::int64_t (*get)(const Record &record);
    void (*set)(Record &record, std::int64_t value);
};

template <class Record, auto field> constexpr Column<Record> column(const char *name)
{
    using Value = std::remove_reference_t<decltype(std::declval<Record &>().*field)>;
    return {name, [](const Record &record) { return static_cast<std::int64_t>(record.*field); },
            [](Record &record, std::int64_t value) { record.*field = static_cast<Value>(value); }};
}

template <auto field> constexpr Column<StoredInterface> own(const char *name)
{
    return column<StoredInterface, field>(name);
}
template <auto field> constexpr Column<l3lif_pi_ctxt> property(const char *name)
{
    return column<l3lif_pi_ctxt, field>(name);
}
template <auto field> constexpr Column<l3_pd> hardware(const char *name)
{
    return column<l3_pd, field>(name);
}

constexpr std::array OWN_COLUMNS = {
    own<&StoredInterface::ifindex>("ifindex"),
    own<&StoredInterface::int_vlan>("int_vlan"),
    own<&StoredInterface::vlan>("vlan"),
    own<&StoredInterface::si_encap_vlan>("si_encap_vlan"),
    own<&StoredInterface::tid>("tid"),
};

// Null together, without an l3lif_pi_ctxt.
constexpr std::array PROPERTY_COLUMNS = {
    property<&l3lif_pi_ctxt::ipv4_en>("ipv4_en"),
    property<&l3lif_pi_ctxt::ipv4_mc_en>("ipv4_mc_en"),
    property<&l3lif_pi_ctxt::ipv6_en>("ipv6_en"),
    property<&l3lif_pi_ctxt::l3_prop_word_7>("l3_prop_word_7"),
    property<&l3lif_pi_ctxt::urpf_mode>("urpf_mode"),
    property<&l3lif_pi_ctxt::vrf>("vrf"),
    property<&l3lif_pi_ctxt::ipv6_vrf>("ipv6_vrf"),
    property<&l3lif_pi_ctxt::mtu>("mtu"),
    property<&l3lif_pi_ctxt::ingress_flag_word>("ingress_flag_word"),
    property<&l3lif_pi_ctxt::l3_prop_word_8>("l3_prop_word_8"),
    property<&l3lif_pi_ctxt::acl_qos_label_pending>("acl_qos_label_pending"),
    property<&l3lif_pi_ctxt::class_high_bit>("class_high_bit"),
    property<&l3lif_pi_ctxt::mpls_en>("mpls_en"),
};

// Null together, without an l3_pd.
constexpr std::array HARDWARE_COLUMNS = {
    hardware<&l3_pd::brcm_prog_complete>("brcm_prog_complete"),
    hardware<&l3_pd::l3intf_id>("l3intf_id"),
    hardware<&l3_pd::prev_l3_if_index>("prev_l3_if_index"),
    hardware<&l3_pd::acl_qos_label_ingress>("acl_qos_label_ingress"),
};

// mac and members stand before the columns of the tables above.
constexpr int FIXED_COLUMNS = 2;

std::vector<std::string> column_names()
{
    std::vector<std::string> names = {"mac", "members"};
    const auto add = [&names](const auto &columns) {
        for (const auto &column : columns) {
            names.emplace_back(column.name);
        }
    };
    add(OWN_COLUMNS);
    add(PROPERTY_COLUMNS);
    add(HARDWARE_COLUMNS);
    names.emplace_back("sum");
    return names;
}

std::string definition(const std::string &name)
{
    if (name == "ifindex") {
        return "ifindex INTEGER PRIMARY KEY";
    }
    return name + (name == "mac" || name == "members" ? " TEXT" : " INTEGER");
}

/** The members of a port-channel in the tree's order. */
std::vector<std::uint32_t> members_of(avl_tree_t *tree)
{
    std::vector<std::uint32_t> members;
    for (const void *record : tree_records(tree)) {
        members.push_back(*static_cast<const std::uint32_t *>(record));
    }
    return members;
}

void bind_all(sqlite::Statement &statement, const auto &columns, const auto *record)
{
    for (const auto &column : columns) {
        if (record == nullptr) {
            statement.bind_null();
        } else {
            statement.bind(column.get(*record));
        }
    }
}

template <class Record>
void read_all(const sqlite::Statement &statement, const auto &columns, int first, Record &record)
{
    for (const auto &column : columns) {
        column.set(record, statement.integer(first++));
    }
}

/** The same for columns that may be null together. */
template <class Record>
std::optional<Record> read_optional(const sqlite::Statement &statement, const auto &columns,
                                    int first)
{
    if (statement.is_null(first)) {
        return std::nullopt;
    }
    Record record{};
    read_all(statement, columns, first, record);
    return record;
}

} // namespace

std::vector<std::string> store_tables()
{
    auto columns = column_names();
    std::transform(columns.begin(), columns.end(), columns.begin(), definition);
    return {fmt::format("CREATE TABLE l3port ({}) STRICT", fmt::join(columns, ", ")),
            "CREATE TABLE global_config (id INTEGER PRIMARY KEY, bytes BLOB NOT NULL, "
            "sum INTEGER NOT NULL) STRICT"};
}

std::string l3port_replace()
{
    const auto names = column_names();
    const std::vector<std::string> marks(names.size(), "?");
    return fmt::format("REPLACE INTO l3port ({}) VALUES ({})", fmt::join(names, ", "),
                       fmt::join(marks, ", "));
}

std::string l3port_select()
{
    return fmt::format("SELECT {} FROM l3port ORDER BY ifindex", fmt::join(column_names(), ", "));
}

void bind_l3port(sqlite::Statement &statement, const l3lif &lif)
{
    const StoredInterface own{.ifindex = lif.ifindex,
                              .int_vlan = lif.int_vlan,
                              .vlan = lif.vlan,
                              .si_encap_vlan = lif.si_encap_vlan,
                              .tid = lif.tid};
    const l3_pd *hardware = lif.l3lif_pd_ctxt == nullptr ? nullptr : lif.l3lif_pd_ctxt->l3_pd;
    chip::Mac mac{};
    std::copy_n(std::begin(lif.mac), mac.size(), mac.begin());
    statement.bind(std::string_view(state::to_text(mac)));
    if (lif.pc_member_tree != nullptr) {
        statement.bind(std::string_view(state::to_text(members_of(lif.pc_member_tree))));
    } else {
        statement.bind_null();
    }
    bind_all(statement, OWN_COLUMNS, &own);
    bind_all(statement, PROPERTY_COLUMNS, lif.l3lif_pi_ctxt);
    bind_all(statement, HARDWARE_COLUMNS, hardware);
    statement.bind_sum();
}

StoredInterface read_l3port(const sqlite::Statement &statement)
{
    StoredInterface row;
    if (!statement.sum_matches()) {
        throw state::BadValue("is not what was written to it");
    }
    state::from_text(statement.text(0), row.mac);
    if (!statement.is_null(1)) {
        state::from_text(statement.text(1), row.members.emplace());
    }
    int first = FIXED_COLUMNS;
    read_all(statement, OWN_COLUMNS, first, row);
    first += static_cast<int>(OWN_COLUMNS.size());
    row.properties = read_optional<l3lif_pi_ctxt>(statement, PROPERTY_COLUMNS, first);
    first += static_cast<int>(PROPERTY_COLUMNS.size());
    row.hardware = read_optional<l3_pd>(statement, HARDWARE_COLUMNS, first);
    return row;
}

} // namespace simswitch::services
