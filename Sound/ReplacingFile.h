#pragma once

#include "Sound/ByteSink.h"

#include <cstdio>
#include <memory>
#include <string>

/// A file that appears under its name only when it is complete: the bytes go to a temporary
/// file in the same directory, which commit() renames. Until then, and without commit(), a file
/// that stood under the name is untouched. A symbolic link is followed, the permissions of an
/// older file are kept. A character device is written directly; anything else that is no file
/// is refused.
class ReplacingFile final : public ByteSink {
public:
    /// `fileName` is taken byte by byte. Answers null where the file cannot be written.
    static std::unique_ptr<ReplacingFile> open(const char *fileName);

    ~ReplacingFile() override;

    /// Unbuffered: a full disk shows at once.
    bool append(const void *bytes, std::size_t count) override;
    bool rewriteStart(const void *bytes, std::size_t count) override;
    bool commit() override;

private:
    struct CloseFile {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;

    ReplacingFile(File file, std::string temporaryName, std::string finalName);

    static std::unique_ptr<ReplacingFile> openDevice(const std::string &name);
    static std::unique_ptr<ReplacingFile> openBeside(const std::string &finalName);

    File m_file;
    std::string m_temporaryName; // empty once there is nothing to remove
    std::string m_finalName;
};
