#pragma once

#include <QString>
#include <string>

/// Without leading and trailing spaces, tabs, carriage returns and line feeds.
std::string trim(const std::string& text);

/// The part of a reply that a caller wants: trimmed, and only what stands before the first ";".
std::string cleanResponse(const std::string& text);

/// The same of a reply as the client reports it, in UTF-8. Fit for replies of megabytes: each is copied once.
std::string cleanedReply(const QString& reply);
