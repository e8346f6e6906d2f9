// Message catalogs: keyed texts read from and written to catalog files.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <map>
#include <shared_mutex>
#include <string>

/// A catalog: an ordered map from key to text, keys compared byte by byte (case-sensitive).
/// Not thread-safe; see MTMapFile. Reading and writing never throw: failures return false.
///
/// The catalog file format (little-endian integers; a string is a 32-bit byte length and the
/// bytes): the class name "(map_string*)" as a string, the class number 1002 (32 bits), the
/// entry count (32 bits), then each key and its text as two strings, in key order.
class OSL_API MapFile {
public:
    using Entries = std::map<std::string, std::string>;
    using iterator = Entries::iterator;
    using const_iterator = Entries::const_iterator;

    MapFile();
    MapFile(const MapFile& other);
    MapFile& operator=(const MapFile& other);
    /// Moves the entries; the source is left empty.
    MapFile(MapFile&& other) noexcept;
    MapFile& operator=(MapFile&& other) noexcept;
    virtual ~MapFile();

    /// Empties the catalog, then reads the file. False when the file cannot be read or is not a
    /// well-formed catalog; the catalog then stays empty.
    bool LoadMap(const std::string& fileName);
    /// Reads the file into the catalog; keys already present keep their text. False when the file
    /// cannot be read or is not a well-formed catalog; the catalog is then unchanged.
    bool AppendMap(const std::string& fileName);
    /// Writes every entry to the file through Osl_File_System::replace: a crash while writing
    /// leaves the old catalog whole. False when it cannot be written (the old file then stays).
    bool StoreMap(const std::string& fileName);
    /// Sets the entry, overwriting an existing text. True when the key existed before the call.
    bool Insert(const std::string& key, const std::string& text);
    /// Sets the entry. Always returns false (kept as published: it reports on the key after
    /// erasing it).
    bool Replace(const std::string& key, const std::string& text);
    /// The text of the key, or "Message " + key + " not found".
    std::string operator[](const std::string& key);
    bool HasEntry(const std::string& key) const;

    iterator begin() { return m_Map.begin(); }
    iterator end() { return m_Map.end(); }
    const_iterator begin() const { return m_Map.begin(); }
    const_iterator end() const { return m_Map.end(); }

protected:
    Entries m_Map;
};

/// A catalog shared between threads: many readers or one writer at a time. LoadMap, AppendMap,
/// Insert and Replace take the write lock; StoreMap, operator[] and HasEntry the read lock.
/// begin/end are not locked: iterate only while no thread writes.
class OSL_API MTMapFile : public MapFile {
public:
    MTMapFile();
    MTMapFile(const MTMapFile& other);
    MTMapFile& operator=(const MTMapFile& other);
    ~MTMapFile() override;

    bool LoadMap(const std::string& fileName);
    bool AppendMap(const std::string& fileName);
    bool StoreMap(const std::string& fileName);
    bool Insert(const std::string& key, const std::string& text);
    bool Replace(const std::string& key, const std::string& text);
    std::string operator[](const std::string& key);
    bool HasEntry(const std::string& key) const;

private:
    mutable std::shared_mutex m_Lock;  // guards m_Map
};

/// The one catalog of the process, shared by every Message. Created on first use, never destroyed.
class OSL_API SingleMapFileMT : public MTMapFile {
public:
    /// The process-wide catalog; safe to call from any thread.
    static SingleMapFileMT* Instance();

    SingleMapFileMT(const SingleMapFileMT&) = delete;
    SingleMapFileMT& operator=(const SingleMapFileMT&) = delete;

private:
    SingleMapFileMT();
    ~SingleMapFileMT() override;
};
