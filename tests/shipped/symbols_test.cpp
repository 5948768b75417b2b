/*
 * symbols_test.cpp: what the shared library shows and what it asks for, held
 * against the headers: it exports what its headers mark, it imports what the
 * platform contract declares, the C library and GLib's hash table, and nothing
 * runs at load.
 *
 * They look at the files that the build made, through nm and readelf.
 * hardening_test.cpp looks at how they were built.
 */
#include "shipped/tool_output.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <link.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using Names = std::set<std::string>;
using rtifhal_test::lines_of;
using ::testing::IsSupersetOf;

#ifdef RTIFHAL_WITH_SANITIZER
constexpr bool WITH_SANITIZER = true;
#else
constexpr bool WITH_SANITIZER = false;
#endif
#ifdef RTIFHAL_WITH_COVERAGE
constexpr bool WITH_COVERAGE = true;
#else
constexpr bool WITH_COVERAGE = false;
#endif

constexpr std::string_view LIBRARY_HEADERS =
    RTIFHAL_SOURCE_DIR "/asic/forwarding-sw/l3lif/pd_trident/include";
constexpr std::string_view EXPORT_MARK = "RTIFHAL_EXPORT";

/** All that the table of private-VLAN pairs takes of GLib. */
const Names GLIB_IMPORTS = {"g_hash_table_new", "g_hash_table_insert", "g_hash_table_lookup",
                            "g_hash_table_remove", "g_hash_table_foreach"};

/** A symbol as nm prints it, the version behind its @ cut off. */
struct Symbol {
    std::string name;
    char type = '?';
};

/** The symbols of a file, as `nm` with these options tells them. */
std::vector<Symbol> symbols_of(const std::string &options, const std::string &file)
{
    std::vector<Symbol> symbols;
    for (const auto &line :
         lines_of(fmt::format("{} --format=posix {} '{}'", RTIFHAL_NM, options, file))) {
        std::istringstream fields(line);
        Symbol symbol;
        // An archive's member headers have one field, and no type.
        if (fields >> symbol.name >> symbol.type) {
            symbol.name.resize(std::min(symbol.name.size(), symbol.name.find('@')));
            symbols.push_back(symbol);
        }
    }
    return symbols;
}

/** True for what only an instrumented build brings along. */
bool is_instrumentation(std::string_view name)
{
    if (WITH_SANITIZER && (name.starts_with("__asan_") || name.starts_with("__ubsan_") ||
                           name.starts_with("__odr_asan"))) {
        return true;
    }
    return WITH_COVERAGE && (name.starts_with("__gcov_") || name == "mangle_path");
}

Names exported_by_library()
{
    Names names;
    for (const auto &symbol : symbols_of("-D --defined-only", RTIFHAL_SHARED_LIBRARY)) {
        if (!is_instrumentation(symbol.name)) {
            names.insert(symbol.name);
        }
    }
    return names;
}

Names imported_by_library()
{
    Names names;
    for (const auto &symbol : symbols_of("-D --undefined-only", RTIFHAL_SHARED_LIBRARY)) {
        // Weak ones are the start files' own questions to the loader.
        if (symbol.type == 'U' && !is_instrumentation(symbol.name)) {
            names.insert(symbol.name);
        }
    }
    return names;
}

/** What the C library of this process and its loader define. */
Names defined_by_libc()
{
    std::vector<std::string> files;
    ::dl_iterate_phdr(
        [](dl_phdr_info *info, std::size_t, void *data) {
            const std::string name = fs::path(info->dlpi_name).filename();
            if (name == "libc.so.6" || name.starts_with("ld-linux")) {
                static_cast<std::vector<std::string> *>(data)->emplace_back(info->dlpi_name);
            }
            return 0;
        },
        &files);
    Names names;
    for (const auto &file : files) {
        for (const auto &symbol : symbols_of("-D --defined-only", file)) {
            names.insert(symbol.name);
        }
    }
    return names;
}

/** A header without comments and preprocessor lines. */
std::string code_of(const fs::path &header)
{
    std::ifstream file(header);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::string code;
    for (std::size_t at = 0; at < text.size();) {
        const bool line_start = code.empty() || code.back() == '\n';
        if (text.compare(at, 2, "/*") == 0) {
            at = text.find("*/", at) + 2;
        } else if (text.compare(at, 2, "//") == 0 || (line_start && text[at] == '#')) {
            at = std::min(text.size(), text.find('\n', at));
        } else {
            code.push_back(text[at++]);
        }
    }
    return code;
}

/** The statements outside of all braces; those of extern "C" don't count. */
std::vector<std::string> statements_of(std::string code)
{
    constexpr std::string_view LINKAGE = "extern \"C\" {";
    if (const auto at = code.find(LINKAGE); at != std::string::npos) {
        code.erase(at, LINKAGE.size());
    }
    std::vector<std::string> statements(1);
    int depth = 0;
    for (const char c : code) {
        if (c == '{') {
            ++depth;
        } else if (c == '}') {
            depth = std::max(0, depth - 1);
        } else if (depth == 0 && c == ';') {
            statements.emplace_back();
        } else if (depth == 0) {
            statements.back().push_back(c);
        }
    }
    return statements;
}

/** The name that a declaration of a function or of data declares; empty for none. */
std::string declared_name(const std::string &statement)
{
    const auto is_word = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
    };
    std::istringstream words(statement);
    std::string first;
    words >> first;
    const auto open = statement.find('(');
    if (first == "typedef" || first == "static" || first.starts_with("SDK_STATIC_ASSERT") ||
        (open == std::string::npos && first != "extern")) {
        return {};
    }
    const auto end = std::min({open, statement.find('['), statement.size()});
    auto begin = end;
    while (begin > 0 && is_word(statement[begin - 1])) {
        --begin;
    }
    return statement.substr(begin, end - begin);
}

/** The names that the headers below a folder declare, those with a mark only if one is given. */
Names declared_in(std::string_view folder, std::string_view mark = {})
{
    Names names;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".h") {
            continue;
        }
        for (const auto &statement : statements_of(code_of(entry.path()))) {
            if (statement.find(mark) != std::string::npos) {
                names.insert(declared_name(statement));
            }
        }
    }
    names.erase("");
    return names;
}

/** What the first set has and the second lacks. */
Names missing(const Names &from, const Names &in)
{
    Names names;
    for (const auto &name : from) {
        if (!in.contains(name)) {
            names.insert(name);
        }
    }
    return names;
}

Names needed_by_library()
{
    Names names;
    for (const auto &line :
         lines_of(RTIFHAL_READELF " --dynamic --wide '" RTIFHAL_SHARED_LIBRARY "'")) {
        const auto open = line.find('[');
        if (line.find("(NEEDED)") != std::string::npos && open != std::string::npos) {
            names.insert(line.substr(open + 1, line.find(']') - open - 1));
        }
    }
    return names;
}

/** The sections of the objects that the library is made of. */
Names sections_of_objects()
{
    Names names;
    for (const auto &line :
         lines_of(RTIFHAL_READELF " --sections --wide '" RTIFHAL_STATIC_ARCHIVE "'")) {
        // "  [ 5] .bss  NOBITS ..."
        std::istringstream behind_number(line.substr(std::min(line.size(), line.find(']') + 1)));
        std::string name;
        if (line.find('[') != std::string::npos && behind_number >> name) {
            names.insert(name);
        }
    }
    return names;
}

bool runs_at_load_or_exit(std::string_view section)
{
    return section.starts_with(".init_array") || section.starts_with(".fini_array") ||
           section.starts_with(".ctors") || section.starts_with(".dtors");
}

TEST(Symbols, ReadersFindWhatIsKnownToBeThere)
{
    EXPECT_THAT(
        declared_in(LIBRARY_HEADERS, EXPORT_MARK),
        IsSupersetOf({"rtifhal_trident_add_l3port", "l3iif_table_init", "fwmpd_ifindex_to_bcm_port",
                      "l3lif_l3iif_table", "def_routes", "rtifhal_port_vlan"}));
    EXPECT_THAT(declared_in(RTIFHAL_PLATFORM_INCLUDE),
                IsSupersetOf({"bcm_l3_intf_get", "rtifhal_bcm_l3_ingress_get_from_cache",
                              "fwm_ds_trace_add", "snprintf_if_index", "avl_create",
                              "fwmpd_global_config", "dbg_out_file", "mtrack_free"}));
    EXPECT_THAT(exported_by_library(), IsSupersetOf({"rtifhal_alloc_l3iif", "num_def_routes"}));
    EXPECT_THAT(imported_by_library(), IsSupersetOf({"fwm_ds_trace_add", "mtrack_free"}));
    EXPECT_THAT(defined_by_libc(), IsSupersetOf({"malloc", "syslog", "memcpy"}));
}

TEST(Symbols, TypesAndMembersAreNoDeclaredNames)
{
    const Names declared = declared_in(RTIFHAL_PLATFORM_INCLUDE);
    EXPECT_EQ(missing({"bcm_l3_intf_t", "l3a_vrf", "avl_compare_t", "l3lif", "SDK_STATIC_ASSERT"},
                      declared)
                  .size(),
              5U);
}

TEST(Symbols, LibraryExportsWhatItsHeadersMark)
{
    EXPECT_EQ(missing(declared_in(LIBRARY_HEADERS, EXPORT_MARK), exported_by_library()), Names{})
        << "declared, but not exported";
}

TEST(Symbols, LibraryExportsNothingElse)
{
    EXPECT_EQ(missing(exported_by_library(), declared_in(LIBRARY_HEADERS, EXPORT_MARK)), Names{})
        << "exported, but in no header";
}

TEST(Symbols, LibraryImportsContractCLibraryAndHashTablesOnly)
{
    Names allowed = declared_in(RTIFHAL_PLATFORM_INCLUDE);
    allowed.merge(defined_by_libc());
    allowed.insert(GLIB_IMPORTS.begin(), GLIB_IMPORTS.end());
    EXPECT_EQ(missing(imported_by_library(), allowed), Names{}) << "imported from elsewhere";
}

TEST(Symbols, NoObjectRunsCodeAtLoad)
{
    const Names sections = sections_of_objects();
    ASSERT_TRUE(sections.contains(".text") && sections.contains(".bss"));
    Names found;
    for (const auto &section : sections) {
        // Instrumented objects register themselves in sections with a priority.
        const bool of_instrumentation =
            (WITH_SANITIZER || WITH_COVERAGE) && section.find("_array.00") != std::string::npos;
        if (runs_at_load_or_exit(section) && !of_instrumentation) {
            found.insert(section);
        }
    }
    EXPECT_EQ(found, Names{});
}

TEST(Symbols, LibraryNeedsCLibraryAndGlibOnly)
{
    Names needed = needed_by_library();
    if (WITH_SANITIZER) {
        std::erase_if(needed, [](const std::string &name) {
            // The run-times of the sanitizers, and what those need themselves.
            return name.starts_with("libasan.") || name.starts_with("libubsan.") ||
                   name.starts_with("libstdc++.") || name.starts_with("libm.");
        });
    }
    EXPECT_EQ(needed, (Names{"libc.so.6", "libglib-2.0.so.0"}));
}

} // namespace
