// Small helpers for paths, files, users, numbers and text.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>
#include <vector>

// Names are UTF-8 and converted like Osl_File's (a name that does not convert is a failure).
// Every function is thread-safe.

/// The directory part of a path, as dirname(1) gives it: "/a/b/c.txt" -> "/a/b", "c.txt" -> ".",
/// "/c" -> "/", "a/b/" -> "a"; "" -> ".".
OSL_API std::string GetDirName(const std::string& path);

/// Osl_Directory::exists: true when path names a directory (symlinks followed). Never throws.
OSL_API bool IsDir(const std::string& path);

/// Osl_File_System::copy: to gets from's content in one step (a reader sees the old file or the
/// whole copy, never part of it). False, with nothing changed, when it fails. Never throws.
OSL_API bool bCopyFile(const std::string& from, const std::string& to);

/// Moves a file, replacing an existing to as mv(1) does: a rename when both are on one file
/// system, else a copy (bCopyFile) and the removal of from. False when it fails; a failed removal
/// after the copy leaves both files. Never throws.
OSL_API bool MoveFileA(const std::string& from, const std::string& to);

/// The name of the effective user; its number in decimal when the system has no name for it.
OSL_API std::string GetUserNameA();

/// A uniformly distributed number in [low, high] (the bounds are swapped when low > high), from a
/// generator seeded once per thread from the system's entropy. Not for secrets.
OSL_API int RandomNumber(int low, int high);

/// value in base 2..36 (lower-case digits), with a "-" for a negative value; another base gives "".
OSL_API std::string ItoA(long value, int base = 10);

/// text without the blanks and tabs at both ends.
OSL_API std::string trimBlanks(const std::string& text);
/// The same, in place.
OSL_API void TrimBlanks(std::string& text);

/// Appends token to tokens with trimBlanks applied, unless nothing is left of it.
OSL_API void add_token(std::vector<std::string>& tokens, const std::string& token);
/// The pieces of text between any of the delimiter characters, each through add_token (so
/// blanks around pieces go and empty pieces are dropped): tokenize(" a, b,,c ", ",") gives
/// {"a", "b", "c"}.
OSL_API std::vector<std::string> tokenize(const std::string& text, const std::string& delimiters = " \t");

/// For a line "KEYWORD = VALUE": true, with value := the trimmed text after the first "=", when the
/// trimmed text before it equals keyword without regard to ASCII case. Otherwise false, value
/// unchanged.
OSL_API bool GetKeyword(const std::string& line, const std::string& keyword, std::string& value);

/// Where a log file of that name goes: an absolute name as it is; a relative one in the
/// installation's log directory (GeneralConfiguration::GetLogDirectory once initialised, else
/// $DECOLLATOR_DIR/log/), or in the temporary directory when no installation is known.
OSL_API std::string GetLogFilePath(const std::string& fileName);
