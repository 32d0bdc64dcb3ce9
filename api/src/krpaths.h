// The rules of file names: where the program lies, and which directory, name and ending each of its files takes.
#pragma once

#include "krstring.h"

/// A base of the session, whose keys settle all of it.
class krPaths {
public:
    static bool isAbsolutePath(const krString& path);
    static krString genDirName(const krString& dir);
    static void setInDir(const krString& dir) { m_inDir = genDirName(dir); }
    static void setOutDir(const krString& dir) { m_outDir = genDirName(dir); }
    static void setDefName(const krString& name);
    static krString genPathName(const krString& dir, const krString& name, const krString& ext);
    static krString genInPath(const krString& name, const krString& ext);
    static krString genOutPath(const krString& name, const krString& ext);
    static krString getDirPath(const krString& path, const krString& dir);
    static krString getInPath(const krString& path) { return getDirPath(path, m_inDir); }
    static krString getOutPath(const krString& path) { return getDirPath(path, m_outDir); }

    // Of the process: settled while the keys are parsed.
    static krString m_exePath;
    static krString m_defName;
    static krString m_inDir;
    static krString m_outDir;
};

extern const char* extIni;
extern const char* extCsv;
extern const char* extOut;
extern const char* extSgl;
extern const char* extName;
extern const char* extSum;
extern const char* extMem;
