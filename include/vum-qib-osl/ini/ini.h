// INI configuration files: the in-memory table of groups and keys, its reader and its writer.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <fstream>
#include <istream>
#include <list>
#include <map>
#include <string>

/// Orders strings with the 26 ASCII letters folded to upper case; every other byte (all bytes
/// above 127 included) compares as itself, unsigned. A proper prefix sorts first. Stateless.
class OSL_API StrCmpInSensitive {
public:
    bool operator()(const std::string& left, const std::string& right) const;
};

/// The keys of one group and their values, ordered by StrCmpInSensitive.
using IniProperties = std::map<std::string, std::string, StrCmpInSensitive>;

class Ini;

/// One group as an IniGroupIterator shows it: its name and its keys. The pointer is the table's
/// own map (not owned); it stays valid while the Ini is not reloaded and the group not erased.
struct Group {
    std::string name;
    const IniProperties* properties = nullptr;
};

/// Walks the groups of an Ini in table order (case-insensitive ascending). Made by Ini::begin
/// and Ini::end only. At the end the name is empty and the properties pointer null.
class OSL_API IniGroupIterator {
public:
    IniGroupIterator(const IniGroupIterator&) = default;
    IniGroupIterator& operator=(const IniGroupIterator&) = default;
    ~IniGroupIterator() = default;

    Group operator*() const;
    IniGroupIterator& operator++();
    IniGroupIterator operator++(int);
    /// Equal when both walk the same Ini and stand at the same group.
    bool operator==(const IniGroupIterator& other) const;
    bool operator!=(const IniGroupIterator& other) const { return !(*this == other); }

private:
    friend class Ini;
    using Position = std::map<std::string, IniProperties, StrCmpInSensitive>::const_iterator;
    IniGroupIterator(const Ini* ini, Position position, Position end);
    void settle();

    const IniProperties* properties_ = nullptr;
    const Ini* ini_ = nullptr;
    std::string name_;
    Position position_;
    Position end_;
};

/// A configuration file in memory: groups of key/value pairs (UTF-8 text), group names and keys
/// compared through StrCmpInSensitive.
///
/// Syntax read: one "[name]" header line, then "key=value" lines, repeated; blanks around the
/// line, the key and the value are dropped; a line whose first character is ";" is a comment, and
/// so is what follows ";" after a header or in a value (not in a value on a line that contains
/// "value=" anywhere). A key or group defined twice keeps its first definition. Lines longer
/// than 10,239 characters end the reading at that point.
///
/// Every failure is thrown as QIBError with one of the parse error numbers as code (see
/// ExceptionNumberToString), severity 12 and where "ini/src/ini". No lock: concurrent reads of an
/// unchanged object are safe, anything else must be serialised by the caller.
class OSL_API Ini {
public:
    using GroupTable = std::map<std::string, IniProperties, StrCmpInSensitive>;

    /// An empty table, then LoadAdd(fileName, readOnly). With the defaults nothing is read.
    explicit Ini(const std::string& fileName = "", bool readOnly = true);
    Ini(const Ini&) = default;
    Ini& operator=(const Ini&) = default;
    /// Moves the table; the source is left valid but unspecified.
    Ini(Ini&&) noexcept = default;
    Ini& operator=(Ini&&) noexcept = default;
    virtual ~Ini();

    /// Empties the table, then LoadAdd.
    void Load(const std::string& fileName, bool readOnly);
    /// Adds the groups of the file to the table; a group already present keeps its keys. Stores
    /// the file name and the flag even when nothing is read; an empty name reads nothing and is
    /// not an error. Throws error 1 when the file cannot be opened, 5 when it holds no content
    /// line, or the parse error of the first bad line (see GetErrorLine); the groups read before
    /// a bad line stay in the table.
    void LoadAdd(const std::string& fileName, bool readOnly);

    bool isGroupExist(const std::string& group) const;
    bool isGroupHasKey(const std::string& group, const std::string& key) const;
    /// The table's own map of the group's keys, or null when there is no such group.
    const IniProperties* GetGroupProperty(const std::string& group) const;
    /// Replaces the list's content with the group names in table order.
    void GetGroupNames(std::list<std::string>& names) const;
    /// The stored value, or defaultValue when the group or key is missing. With expandEnvironment,
    /// every "%NAME%" of an existing environment variable is replaced by its value once (the
    /// substituted text is not expanded again; "%%" is skipped; unknown names stay as they are).
    std::string GetKeyValue(const std::string& group, const std::string& key, const std::string& defaultValue,
                            bool expandEnvironment) const;
    /// GetKeyValue with expansion. A non-null found is set to whether the key exists; when it
    /// does not, defaultValue is returned as it is.
    std::string GetString(const std::string& group, const std::string& key, const std::string& defaultValue,
                          bool* found) const;

    IniGroupIterator begin() const;
    IniGroupIterator end() const;

    /// The text of a parse error number 1..15; "" for 0 and for any other number. The texts live
    /// as long as the library.
    static const std::string& ExceptionNumberToString(int number);

    /// Empties the group (or creates it). The name is cut at its first CR or LF, ";" and tab become
    /// blanks. True when a group of that name existed before.
    bool InsertNewGroup(const std::string& group);
    /// Sets one value; group, key and value are cleaned as in InsertNewGroup (the value is kept as
    /// it is when the key is exactly "value"). Returns true when the key existed before, false when
    /// it was added to an existing group, and true when the group itself had to be created.
    bool SetKeyValue(const std::string& group, const std::string& key, const std::string& value);
    /// No error when the group or key is absent.
    void EraseGroup(const std::string& group);
    void EraseKey(const std::string& group, const std::string& key);

    /// Writes the table in canonical form ("[group]", then "key=value" lines, then an empty line,
    /// groups and keys in table order; comments are not kept) to fileName, or to the file of the
    /// last load when fileName is empty (the stored name is not changed). The file is replaced in
    /// one step through Osl_File_System::replace: a crash leaves the old or the new content, and
    /// mode, owner, group and a symlinked name are kept. Throws error 2 when the table was loaded
    /// read-only, 3 when the file cannot be written (or its name does not convert).
    virtual void FlushIniDataToFile(const std::string& fileName);

    /// The line number (from 1) of the line a parse error of the last Load/LoadAdd was raised on
    /// (for error 5, the number of lines the file has); 0 when that load succeeded or the file
    /// could not be opened. Load with Load or LoadAdd to ask it: a constructor that throws leaves
    /// no object.
    int GetErrorLine() const { return errorLine_; }
    /// The file name of the last Load/LoadAdd.
    const std::string& GetFileName() const { return fileName_; }
    bool IsReadOnly() const { return readOnly_; }

protected:
    /// The next content line, trimmed; false when the stream ends. Blank lines and lines starting
    /// with ";" are skipped.
    bool GetNextLine(std::istream& in, std::string& line);
    /// Replaces the header line by the group name it declares.
    void GetGroupName(std::string& line);
    /// Parses the header in line, then its key lines; leaves the next header (if any) in line.
    void GetNewGroup(std::istream& in, std::string& line, std::string& groupName, IniProperties& properties);
    void GetProperties(std::istream& in, std::string& line, IniProperties& properties);
    void GetKey(std::string& line, std::string& key);
    void GetValue(std::string& line, std::string& value);
    bool DoesGroupEnd(const std::string& line);
    void ReadDataFromIniFile(std::fstream& in);
    /// The reading loop without the file handling: first definitions win, errors propagate.
    void ReadGroups(std::istream& in);
    /// Writes the canonical form.
    void WriteGroups(std::ostream& out) const;

    void SetFileName(const std::string& fileName) { fileName_ = fileName; }
    const GroupTable& Groups() const { return groups_; }

private:
    GroupTable groups_;
    bool readOnly_ = true;
    std::string fileName_;
    int lineNumber_ = 0;  // lines taken from the stream being read
    int errorLine_ = 0;
};
