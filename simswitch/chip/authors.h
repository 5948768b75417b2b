/*
 * authors.h: whose request put an entry of the chip there. Nothing is noted
 * until somebody asks for it with Chip::track_authors(). Who makes a request
 * names it for as long as it runs:
 *
 *     Authors::Scope author(chip.authors, "add Ethernet0");
 *
 * and who explains a frame asks with the table and id that a trace's line has
 * (pipeline/observer.h).
 */
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace simswitch::chip
{

/** Whose request put what there. */
class Authors
{
public:
    /** Names who writes, as long as it lives; scopes may stand in each other, the inner counts. */
    class Scope
    {
    public:
        Scope(Authors &authors, std::string name);
        ~Scope();
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        Authors &authors_;
        std::string before_;
    };

    /**
     * Who wrote an entry since it was last put in, each once, in the order of the
     * first write; none when nothing was tracked, or it was written outside a scope.
     *
     * @param table  its table, as Chip::for_each_table names it
     * @param id     its id, as a trace's line has it
     */
    std::vector<std::string> of(std::string_view table, std::string_view id) const;

    // For who sees the writes, which is Chip::track_authors().

    /** An entry was put in or changed, by the request of the innermost scope. */
    void wrote(std::string_view table, std::string_view id);
    /** An entry was taken out: its authors are forgotten. */
    void ended(std::string_view table, std::string_view id);
    /** Forgets all authors. */
    void clear() { entries_.clear(); }

private:
    std::string current_;                                     ///< who writes now, empty for nobody
    std::map<std::string, std::vector<std::string>> entries_; ///< authors by table and id
};

} // namespace simswitch::chip
