/*
 * report.cpp: see report.h.
 */
#include "packet/report.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace lab::packet
{

using simswitch::chip::pipeline::Verdict;

namespace
{

constexpr std::string_view GREEN = "\x1b[32m";
constexpr std::string_view RED = "\x1b[31m";
constexpr std::string_view YELLOW = "\x1b[33m";
constexpr std::string_view OFF = "\x1b[0m";
constexpr std::size_t DEFAULT_WIDTH = 120;
constexpr std::size_t SMALLEST_TEXT = 24;  // narrower columns are no help
constexpr std::size_t LONGEST_ID = 8;      // longer ones push their own text aside
constexpr std::size_t LONGEST_AUTHOR = 26; // longer ones stand at the end of the line
constexpr std::size_t MARK_WIDTH = 4;
constexpr std::size_t LABEL_WIDTH = 8; // of "DROPPED", "likewise"

std::string painted(std::string_view text, std::string_view colour, bool wanted)
{
    return wanted && !colour.empty() ? fmt::format("{}{}{}", colour, text, OFF) : std::string(text);
}

/** A text in lines of a width, broken at blanks. */
std::vector<std::string> wrapped(std::string_view text, std::size_t width)
{
    std::vector<std::string> lines;
    while (text.size() > width) {
        std::size_t end = text.rfind(' ', width);
        end = end == std::string_view::npos || end == 0 ? text.find(' ') : end;
        if (end == std::string_view::npos) {
            break;
        }
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    lines.emplace_back(text);
    return lines;
}

/** "add Ethernet0 +39": of several requests one, and how many others. */
std::string author_text(const ExplainedLine &line)
{
    return line.authors.size() > 1 ? fmt::format("{} +{}", line.author, line.authors.size() - 1)
                                   : line.author;
}

/** Prints the stages in columns. */
class Stages
{
public:
    Stages(const Explanation &told, const ReportView &view, std::ostream &out)
        : told_(told), view_(view), out_(out)
    {
        measure();
    }

    void print()
    {
        fmt::print(out_, "{:<{}}  {:<{}}  {:<{}}  {:<{}}  PUT THERE BY\n", "", MARK_WIDTH, "STAGE",
                   stage_, "ID", id_, "WHAT", text_);
        for (const ExplainedLine &line : told_.lines) {
            print_line(line);
        }
    }

private:
    static std::string stage_of(const ExplainedLine &line)
    {
        return simswitch::chip::pipeline::text(line.stage);
    }

    /** The text with what of a long id doesn't fit into its column. */
    std::string text_of(const ExplainedLine &line) const
    {
        return line.shown_id.size() > id_ ? fmt::format("{}: {}", line.shown_id, line.text)
                                          : line.text;
    }

    void measure()
    {
        id_ = 2;
        for (const ExplainedLine &line : told_.lines) {
            stage_ = std::max(stage_, stage_of(line).size());
            const std::size_t author = author_text(line).size();
            author_ = author <= LONGEST_AUTHOR ? std::max(author_, author) : author_;
            if (line.shown_id.size() <= LONGEST_ID) {
                id_ = std::max(id_, line.shown_id.size());
            }
        }
        const std::size_t width = view_.width == 0 ? DEFAULT_WIDTH : view_.width;
        indent_ = MARK_WIDTH + 2 + stage_ + 2 + id_ + 2;
        room_ = width > indent_ + SMALLEST_TEXT ? width - indent_ : SMALLEST_TEXT;
        const std::size_t beside = room_ > author_ + 2 ? room_ - author_ - 2 : 0;
        for (const ExplainedLine &line : told_.lines) {
            const std::size_t size = text_of(line).size();
            text_ = size <= beside ? std::max(text_, size) : text_;
        }
        text_ = std::max(text_, std::min(SMALLEST_TEXT, beside));
    }

    void print_line(const ExplainedLine &line)
    {
        constexpr std::string_view MARKS[] = {"HIT", "MISS", "-"};
        constexpr std::string_view COLOURS[] = {GREEN, RED, ""};
        const auto mark = static_cast<std::size_t>(line.mark);
        const std::string padding(MARK_WIDTH - MARKS[mark].size(), ' ');
        const std::string author = author_text(line);
        const bool long_id = line.shown_id.size() > id_;
        const std::string head =
            fmt::format("{}{}  {:<{}}  {:<{}}  ", painted(MARKS[mark], COLOURS[mark], view_.colour),
                        padding, stage_of(line), stage_, long_id ? "" : line.shown_id, id_);
        const std::string text = text_of(line);
        auto lines = wrapped(text, room_);
        sign(lines, author);
        put(head + lines.front());
        lines.erase(lines.begin());
        put_indented(lines);
        // Below the verdict it stands again.
        const bool told_later = line.nearest == told_.nearest;
        if (!line.nearest.empty() && !told_later) {
            put_indented(wrapped("nearest: " + line.nearest, room_));
        }
    }

    /** Puts the author of some lines behind the last one: in the column of authors, else at the
     * end of the line, else below. */
    void sign(std::vector<std::string> &lines, const std::string &author) const
    {
        if (author.empty()) {
            return;
        }
        const std::string last = lines.back();
        if (last.size() <= text_ && text_ + 2 + author.size() <= room_) {
            lines.back() = fmt::format("{:<{}}  {}", last, text_, author);
        } else if (last.size() + 2 + author.size() <= room_) {
            lines.back() = fmt::format("{}{:>{}}", last, author, room_ - last.size());
        } else {
            lines.push_back(fmt::format("{:>{}}", author, room_));
        }
    }

    void put_indented(const std::vector<std::string> &lines)
    {
        for (const std::string &line : lines) {
            put(std::string(indent_, ' ') + line);
        }
    }

    /** A line without the blanks at its end. */
    void put(std::string line)
    {
        line.erase(line.find_last_not_of(' ') + 1);
        fmt::print(out_, "{}\n", line);
    }

    const Explanation &told_;
    const ReportView &view_;
    std::ostream &out_;
    std::size_t stage_ = 5;  ///< columns of the stages' names
    std::size_t id_ = 2;     ///< columns of the ids that aren't too long
    std::size_t text_ = 0;   ///< columns of the texts that have their author beside them
    std::size_t author_ = 0; ///< columns of the authors that aren't too long
    std::size_t indent_ = 0; ///< where the texts begin
    std::size_t room_ = 0;   ///< columns from there to the end of the line
};

/** Prints the verdict, and below it what belongs to it, each under a label. */
class Verdicts
{
public:
    Verdicts(const ReportView &view, std::ostream &out) : view_(view), out_(out) {}

    void labelled(std::string_view label, std::string_view colour, const std::string &text)
    {
        const std::size_t width = view_.width == 0 ? DEFAULT_WIDTH : view_.width;
        const std::size_t room = std::max(width, LABEL_WIDTH + 2 + SMALLEST_TEXT) - LABEL_WIDTH - 2;
        std::string head = painted(label, colour, view_.colour);
        head.append(LABEL_WIDTH - label.size(), ' ');
        for (const std::string &line : wrapped(text, room)) {
            fmt::print(out_, "{}  {}\n", head, line);
            head.assign(LABEL_WIDTH, ' ');
        }
    }

    void changes(const Explanation &told)
    {
        std::size_t width = 0;
        for (const auto &change : told.changes) {
            width = std::max(width, change.field.size());
        }
        for (const auto &change : told.changes) {
            fmt::print(out_, "{:<{}}  {:<{}}  {} -> {}\n", "", LABEL_WIDTH, change.field, width,
                       change.before, change.after);
        }
    }

private:
    const ReportView &view_;
    std::ostream &out_;
};

void print_verdict(const Explanation &told, const ReportView &view, std::ostream &out)
{
    Verdicts verdict(view, out);
    const std::string reason = told.why();
    switch (told.verdict) {
    case Verdict::sent:
        verdict.labelled("SENT", GREEN, fmt::format("{}: {}", told.sent_text(), reason));
        verdict.changes(told);
        if (told.copied_to_cpu) {
            verdict.labelled("TO CPU", YELLOW, fmt::format("a copy: {}", told.cpu_reason));
        }
        break;
    case Verdict::to_cpu:
        verdict.labelled("TO CPU", YELLOW, reason);
        break;
    case Verdict::dropped:
        verdict.labelled("DROPPED", RED, reason);
        break;
    }
    if (!told.nearest.empty()) {
        verdict.labelled("nearest", "", told.nearest);
    }
    for (const std::string &fate : told.fates) {
        verdict.labelled("likewise", "", fate);
    }
}

} // namespace

void print_text(const Explanation &explanation, const ReportView &view, std::ostream &out)
{
    fmt::print(out, "{} (port {}{}): {}\n\n", explanation.port_name, explanation.port,
               explanation.note.empty() ? "" : ", " + explanation.note, explanation.frame);
    Stages(explanation, view, out).print();
    fmt::print(out, "\n");
    print_verdict(explanation, view, out);
}

} // namespace lab::packet
