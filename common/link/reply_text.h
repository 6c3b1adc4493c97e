#pragma once

#include <string>

/// Without leading and trailing spaces, tabs, carriage returns and line feeds.
std::string trim(const std::string& text);

/// The part of a reply that a caller wants: trimmed, and only what stands before the first ";".
std::string cleanResponse(const std::string& text);

/// The same, in the place of the reply: fit for megabytes.
std::string cleanedReply(std::string reply);
