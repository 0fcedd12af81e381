// Copies of the stores, on which something can be tried.
#pragma once

#include <map>
#include <string>

namespace HostCopy {

/// Copies the store and the schema store of the host root, as they are at one moment, to where they
/// belong under other roots; one that is not there is not there in the copies either. Takes no right to
/// write, so that others write meanwhile; types are not changed while they are copied.
/// \param first, second  directories that nobody else uses; those below them are made
///
/// Raises std::runtime_error, with the last store error set, as the other functions do.
void Copy(const std::string& first, const std::string& second);

/// What is not empty of the key/value entries of the host root's store; nothing where there is none.
std::map<std::string, std::string> ReadEntries();

/// Why this user could not write a database of the host root, or make it where there is none, now: the
/// right that is missing, and what mends it. Empty where nothing of the kind is to be seen.
std::string WhyNotWritable(const char* fixedPath);

}  // namespace HostCopy
