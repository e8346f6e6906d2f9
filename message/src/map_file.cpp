// message/src/map_file.cpp
// Catalog stores: plain, locked, and the process-wide one.
#include <vum-qib-osl/message/map_file.h>

#include "message/src/catalog_format.h"

#include <mutex>
#include <utility>

MapFile::MapFile() = default;
MapFile::MapFile(const MapFile& other) = default;
MapFile& MapFile::operator=(const MapFile& other) = default;
MapFile::MapFile(MapFile&& other) noexcept : m_Map(std::move(other.m_Map)) { other.m_Map.clear(); }
MapFile& MapFile::operator=(MapFile&& other) noexcept {
    if (this != &other) {
        m_Map = std::move(other.m_Map);
        other.m_Map.clear();
    }
    return *this;
}
MapFile::~MapFile() = default;

bool MapFile::LoadMap(const std::string& fileName) {
    m_Map.clear();
    return osl::detail::readCatalogFile(fileName, m_Map);
}

bool MapFile::AppendMap(const std::string& fileName) {
    return osl::detail::readCatalogFile(fileName, m_Map);
}

bool MapFile::StoreMap(const std::string& fileName) {
    return osl::detail::writeCatalogFile(fileName, m_Map);
}

bool MapFile::Insert(const std::string& key, const std::string& text) {
    auto [position, inserted] = m_Map.insert_or_assign(key, text);
    return !inserted;
}

bool MapFile::Replace(const std::string& key, const std::string& text) {
    m_Map.erase(key);
    // Deliberate: asks after the erase, so the answer is always false. Callers rely on it.
    const bool existed = m_Map.find(key) != m_Map.end();
    m_Map[key] = text;
    return existed;
}

std::string MapFile::operator[](const std::string& key) {
    auto found = m_Map.find(key);
    if (found == m_Map.end()) return "Message " + key + " not found";
    return found->second;
}

bool MapFile::HasEntry(const std::string& key) const { return m_Map.find(key) != m_Map.end(); }

MTMapFile::MTMapFile() = default;

MTMapFile::MTMapFile(const MTMapFile& other) : MapFile() {
    std::shared_lock lock(other.m_Lock);
    m_Map = other.m_Map;
}

MTMapFile& MTMapFile::operator=(const MTMapFile& other) {
    if (this == &other) return *this;
    std::unique_lock mine(m_Lock, std::defer_lock);
    std::shared_lock theirs(other.m_Lock, std::defer_lock);
    std::lock(mine, theirs);
    m_Map = other.m_Map;
    return *this;
}

MTMapFile::~MTMapFile() = default;

bool MTMapFile::LoadMap(const std::string& fileName) {
    std::unique_lock lock(m_Lock);
    return MapFile::LoadMap(fileName);
}

bool MTMapFile::AppendMap(const std::string& fileName) {
    std::unique_lock lock(m_Lock);
    return MapFile::AppendMap(fileName);
}

bool MTMapFile::StoreMap(const std::string& fileName) {
    std::shared_lock lock(m_Lock);
    return MapFile::StoreMap(fileName);
}

bool MTMapFile::Insert(const std::string& key, const std::string& text) {
    std::unique_lock lock(m_Lock);
    return MapFile::Insert(key, text);
}

bool MTMapFile::Replace(const std::string& key, const std::string& text) {
    std::unique_lock lock(m_Lock);
    return MapFile::Replace(key, text);
}

std::string MTMapFile::operator[](const std::string& key) {
    std::shared_lock lock(m_Lock);
    return MapFile::operator[](key);
}

bool MTMapFile::HasEntry(const std::string& key) const {
    std::shared_lock lock(m_Lock);
    return MapFile::HasEntry(key);
}

SingleMapFileMT::SingleMapFileMT() = default;
SingleMapFileMT::~SingleMapFileMT() = default;

SingleMapFileMT* SingleMapFileMT::Instance() {
    // The first call creates it under the guard of a function-local static; later calls take
    // no lock at all.
    static SingleMapFileMT* const instance = new SingleMapFileMT;
    return instance;
}
