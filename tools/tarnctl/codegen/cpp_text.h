// Names, literals and comments of C++ that stand for any text.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// A text as a name in capitals, "snmp-port" as "SnmpPort": what is neither letter nor digit goes.
/// May be empty, begin with a digit, and be the same for several texts.
std::string CapitalName(std::string_view text);

/// The same for several texts, each with a name of its own: where names are missing or the same, all of
/// those texts get one that says them byte by byte, whatever their order: "xsnmp_2dport". Goes after a
/// word that makes it an identifier.
std::map<std::string, std::string, std::less<>> DistinctNames(const std::set<std::string>& texts);

/// A string literal. What is not printable ASCII is escaped, so that nothing depends on the encoding.
std::string CppLiteral(std::string_view text);

/// Lines for a Doxygen comment, none longer than a line of code if it can be helped. What they hold
/// stays inside the comment, is no command of Doxygen's, and cannot look like something else.
std::vector<std::string> CommentLines(std::string_view text);

}  // namespace tarnctl
