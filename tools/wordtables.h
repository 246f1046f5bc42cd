// The words of resource scripts as tables in Markdown.
#pragma once

#include <string>

/// All tables, each between two comments that name it.
std::string WordTables();
/// Puts the tables in the place of those that stand between such comments.
/// @return what is wrong with the comments, or an empty text
std::string ReplaceWordTables(std::string &strText);
