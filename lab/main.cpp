/*
 * main.cpp: the command rtif. commands/command_line.h has the rest.
 */
#include "commands/command_line.h"
#include "commands/line_editor.h"
#include "commands/progress_bar.h"

#include <cstdlib>
#include <iostream>
#include <unistd.h>

int main(int argc, char **argv)
{
    const char *no_colour = std::getenv("NO_COLOR");
    const bool wanted = no_colour == nullptr || *no_colour == '\0';
    return lab::commands::run(argc, argv,
                              {std::cout, std::cerr, wanted && isatty(STDOUT_FILENO) == 1,
                               lab::commands::LineEditor::columns(),
                               lab::commands::ProgressBar::can_show()});
}
