// The rules of file names.
#include "krpaths.h"

const char* extIni = ".ini";
const char* extCsv = ".csv";
const char* extOut = ".txt";
const char* extSgl = ".end";
const char* extName = "_name.csv";
const char* extSum = "_sum.csv";
const char* extMem = "_mem.csv";

krString krPaths::m_exePath;
krString krPaths::m_defName;
krString krPaths::m_inDir;
krString krPaths::m_outDir;

bool krPaths::isAbsolutePath(const krString& path) {
    return path[0] == '/' || path[0] == '\\' || (path.length() >= 2 && path[1] == ':');
}

krString krPaths::genDirName(const krString& dir) {
    if (dir.empty()) {
        return m_exePath.getFileDir();
    }
    const char last = dir[dir.length() - 1];
    const krString full = last == '/' || last == '\\' ? dir : dir + "/";
    return isAbsolutePath(full) ? full : m_exePath.getFileDir() + full;
}

void krPaths::setDefName(const krString& name) {
    m_defName = name.empty() ? m_exePath.getFileTitle() : name;
}

krString krPaths::genPathName(const krString& dir, const krString& name, const krString& ext) {
    if (isAbsolutePath(name)) {
        return name;
    }
    if (name.empty()) {
        return dir + m_defName + ext;
    }
    return name.contains('.') ? dir + name : dir + name + ext;
}

krString krPaths::genInPath(const krString& name, const krString& ext) {
    return genPathName(m_inDir, name, ext);
}

krString krPaths::genOutPath(const krString& name, const krString& ext) {
    return genPathName(m_outDir, name, ext);
}

krString krPaths::getDirPath(const krString& path, const krString& dir) {
    if (isAbsolutePath(path)) {
        return path;
    }
    if (dir.empty()) {
        return m_exePath.getFileDir() + path;
    }
    return path.find(dir) == 0 ? path : dir + path;
}
