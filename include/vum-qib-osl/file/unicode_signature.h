// Unicode signatures (byte-order marks) at the head of text files, and opening C files by a
// UTF-8 name.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstdio>
#include <istream>

/// Signature bytes, zero-padded to four: UTF-8 (EF BB BF, 3 bytes compared), UTF-16
/// little-endian (FF FE, 2 bytes) and UTF-16 big-endian (FE FF, 2 bytes). Write them at the head
/// of a file to mark its encoding.
OSL_API extern const char UTF8_Header[4];
OSL_API extern const char UNICODE_Header[4];
OSL_API extern const char UNICODE_BE_Header[4];

/// Opens a C file. In Unicode mode the path is UTF-8 text and is converted to the file-system
/// encoding first (Osl_FileSystemName); in legacy mode its bytes are used as they are. Returns
/// null, with errno set, when the file cannot be opened (EINVAL for a null path or mode, EILSEQ
/// for a name that does not convert: never another, shortened name). The caller fcloses the file.
OSL_API FILE* Osl_Fopen(const char* path, const char* mode);

/// Detects a signature at the current position (not necessarily the start of the file):
/// 0 none, the position is unchanged; 1 UTF-8, positioned after its 3 bytes; 2 UTF-16LE and
/// 3 UTF-16BE, positioned after their 2 bytes. Never fails: a short, unreadable or unseekable
/// file, or a null one, gives 0 (and nothing is consumed from an unseekable one).
OSL_API int Osl_FILE_SkipSignature(FILE* file);

/// The same on an input stream, with one deliberate difference: the stream's error state is not
/// cleared between the attempts. On a file of fewer than 3 bytes the first read fails, so the
/// stream stays failed and the result is 0 even for a file holding just FF FE (where the FILE*
/// form gives 2). Call clear() and seekg(0) before reading such a stream on.
OSL_API int Osl_Ifstream_SkipSignature(std::istream& in);
