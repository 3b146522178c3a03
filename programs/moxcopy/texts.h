// SPDX-License-Identifier: Apache-2.0
/// @file
/// What moxcopy says, in English and as a message file has it.
#pragma once

/// The English texts, each with what its conversions stand for.
namespace texts {

inline constexpr char copying[] = "Copying %s";          // system
inline constexpr char copied[] = "Copied '%s'.";         // file
inline constexpr char plan[] = "System '%s': %s in %s."; // system, files, directories
inline constexpr char summary[] = "%s, %ju bytes copied to '%s' in %.2f seconds."; // files, ...
inline constexpr char oneFile[] = "%zu file";
inline constexpr char moreFiles[] = "%zu files";
inline constexpr char oneDirectory[] = "%zu directory";
inline constexpr char moreDirectories[] = "%zu directories";
inline constexpr char oneFailure[] = "%zu failure";
inline constexpr char moreFailures[] = "%zu failures";
inline constexpr char overwrite[] = "Overwrite the copy '%s'?"; // directory
inline constexpr char leftAlone[] = "The copy is left as it is.";
inline constexpr char cancelled[] = "Cancelled, nothing was copied";
inline constexpr char diskFull[] = "The disk is full, nothing was copied";
inline constexpr char nothing[] = "There is nothing to copy";
inline constexpr char noSystem[] = "There is no system '%s': no directory '%s'";
inline constexpr char inOneAnother[] = "Cannot copy '%s' to '%s': one would lie in the other";
inline constexpr char inTheWay[] = "'%s' is in the way: it is not a directory";
inline constexpr char cannotWrite[] = "Cannot write '%s': %s"; // path, reason
inline constexpr char cannotRemove[] = "Cannot remove '%s'";   // path
inline constexpr char notCopied[] = "Not copied: '%s' (%s)";   // path, reason
inline constexpr char unreadable[] = "the directory cannot be read";
inline constexpr char noDiagram[] = "the system has no such diagram";
inline constexpr char backslash[] = "the name holds a backslash";
inline constexpr char badSystem[] = "Invalid system name: %s";
inline constexpr char noProject[] = "The project directory is empty";
inline constexpr char noTarget[] =
    "There is no -target, and the ToolInfo variable tmp_dir is not set";
inline constexpr char noProjectDirectory[] = "There is no project directory '%s'";
inline constexpr char isLink[] = "'%s' is a link: name the directory that it leads to";
inline constexpr char outputLost[] = "Standard output cannot be written: %s"; // reason
inline constexpr char furtherFailures[] = "... and %zu more";
inline constexpr char keptFile[] = "%zu file of the old copy was kept.";
inline constexpr char keptFiles[] = "%zu files of the old copy were kept.";
inline constexpr char badFilter[] = "The filter is for file names, not for paths";

} // namespace texts

/// The text of the message file for @p english, one of the above (see kaz_text). Lives as
/// long as the process. The compiler checks the arguments against the English.
const char* localText(const char* english) __attribute__((format_arg(1)));

/// Is there a ToolInfo file? Without one, asking for a variable is a fatal error.
bool hasConfiguration();
