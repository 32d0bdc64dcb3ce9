// The whole texts of the help: behind the line "QUICK HELP" without hidden keys, and behind the line "EXTENDED HELP
// with hidden keys".
#pragma once

#include <string>

std::string expectedShortHelp();
std::string expectedFullHelp();
