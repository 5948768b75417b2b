/*
 * calls_seen.cpp: which platform functions each exported function calls, noted
 * while the tests run. docs/calls.md is made of it.
 *
 * The linker leads each new record of the journal here (--wrap in
 * tests/CMakeLists.txt). Whoever of the exported functions is on the stack then
 * has caused the call, so that a function answers for what it calls through
 * others, which are noted too.
 *
 * Nothing is noted unless RTIFHAL_CALLS_FILE names a file. It gets a line
 * "caller callee" for each pair, and a line "partial" where not all tests ran.
 *
 * What is inlined or left by a tail call isn't on the stack: this is for builds
 * without optimisation.
 */
#include "journal/journal.h"

#include "rtifhal_trident.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <unwind.h>
#include <utility>

// Journal::add, as the linker names it around the wrap. A member function takes
// its object as the first argument.
std::size_t
wrapped_add(simswitch::Journal *journal,
            simswitch::CallRecord record) asm("__wrap__ZN9simswitch7Journal3addENS_10CallRecordE");
std::size_t
real_add(simswitch::Journal *journal,
         simswitch::CallRecord record) asm("__real__ZN9simswitch7Journal3addENS_10CallRecordE");

namespace
{

/** The exported functions by the address where each begins. */
const std::unordered_map<std::uintptr_t, std::string> &exported_functions()
{
    static const std::unordered_map<std::uintptr_t, std::string> functions = {
#define EXPORTED(name) {reinterpret_cast<std::uintptr_t>(&(name)), #name},
#include "exported_functions.inc"
#undef EXPORTED
    };
    return functions;
}

/** Where the pairs are written; null for nowhere. */
const char *calls_file()
{
    static const char *const path = std::getenv("RTIFHAL_CALLS_FILE");
    return path;
}

/** By exported function what it has called: platform functions and other exported ones. */
std::map<std::string, std::set<std::string>> &seen()
{
    static std::map<std::string, std::set<std::string>> pairs;
    return pairs;
}

/** An exported function on the stack has called all that was found below it. */
_Unwind_Reason_Code note_frame(struct _Unwind_Context *frame, void *argument)
{
    auto &below = *static_cast<std::set<std::string> *>(argument);
    const auto &exported = exported_functions();
    if (const auto found = exported.find(_Unwind_GetRegionStart(frame)); found != exported.end()) {
        const std::string &caller = found->second;
        below.erase(caller);
        seen()[caller].insert(below.begin(), below.end());
        below.insert(caller);
    }
    return _URC_NO_REASON;
}

/** Begins the file anew and fills it at the end of the run. */
class CallsFile : public ::testing::Environment
{
public:
    void SetUp() override { std::ofstream{calls_file()}; }

    void TearDown() override
    {
        std::ofstream file(calls_file());
        const auto &run = *::testing::UnitTest::GetInstance();
        if (run.skipped_test_count() > 0 || GTEST_FLAG_GET(filter) != "*") {
            file << "partial\n";
        }
        for (const auto &[caller, callees] : seen()) {
            for (const std::string &callee : callees) {
                file << caller << ' ' << callee << '\n';
            }
        }
        file.close();
        EXPECT_TRUE(file) << calls_file() << ": can't be written";
    }
};

const ::testing::Environment *const environment =
    calls_file() != nullptr ? ::testing::AddGlobalTestEnvironment(new CallsFile) : nullptr;

} // namespace

std::size_t wrapped_add(simswitch::Journal *journal, simswitch::CallRecord record)
{
    if (environment != nullptr && !record.trace_sink) {
        std::set<std::string> below = {record.function};
        _Unwind_Backtrace(note_frame, &below);
    }
    return real_add(journal, std::move(record));
}
