// The whole texts of the help: after the line "QUICK HELP" without hidden keys, and after the line "EXTENDED HELP
// with hidden keys".
#pragma once

#include <string>

std::string expectedShortHelp();
std::string expectedFullHelp();
