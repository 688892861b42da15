#include "Sound/ReplacingFile.h"

#include <filesystem>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace {

/// Independent of the final name, which may be as long as the file system allows.
std::string temporaryNameIn(const fs::path &directory)
{
    constexpr char Digits[] = "0123456789abcdef";
    std::random_device random;
    std::string name = ".quillmoor-";
    for (int i = 0; i < 16; ++i)
        name += Digits[random() % 16];
    return (directory / (name + ".part")).string();
}

bool canWriteOver(const std::string &name)
{
    std::FILE *const file = std::fopen(name.c_str(), "r+b");
    if (file != nullptr)
        std::fclose(file);
    return file != nullptr;
}

} // namespace

ReplacingFile::ReplacingFile(File file, std::string temporaryName, std::string finalName)
    : m_file(std::move(file))
    , m_temporaryName(std::move(temporaryName))
    , m_finalName(std::move(finalName))
{
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
}

ReplacingFile::~ReplacingFile()
{
    m_file.reset();
    if (!m_temporaryName.empty())
        std::remove(m_temporaryName.c_str());
}

std::unique_ptr<ReplacingFile> ReplacingFile::open(const char *fileName)
{
    std::error_code error;
    const fs::path path(fileName);
    if (path.filename().empty())
        return nullptr;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found && !fs::is_symlink(path, error))
        return openBeside(path.string());
    const fs::path target = fs::canonical(path, error);
    if (error)
        return nullptr;
    if (status.type() == fs::file_type::character)
        return openDevice(target.string());
    if (status.type() != fs::file_type::regular || !canWriteOver(target.string()))
        return nullptr;
    return openBeside(target.string());
}

std::unique_ptr<ReplacingFile> ReplacingFile::openDevice(const std::string &name)
{
    File file(std::fopen(name.c_str(), "wb"));
    if (file == nullptr)
        return nullptr;
    return std::unique_ptr<ReplacingFile>(new ReplacingFile(std::move(file), {}, {}));
}

std::unique_ptr<ReplacingFile> ReplacingFile::openBeside(const std::string &finalName)
{
    const std::string temporaryName = temporaryNameIn(fs::path(finalName).parent_path());
    File file(std::fopen(temporaryName.c_str(), "wbx"));
    if (file == nullptr)
        return nullptr;
    std::error_code error;
    const fs::file_status old = fs::status(finalName, error);
    if (fs::is_regular_file(old))
        fs::permissions(temporaryName, old.permissions(), error);
    return std::unique_ptr<ReplacingFile>(
        new ReplacingFile(std::move(file), temporaryName, finalName));
}

bool ReplacingFile::append(const void *bytes, std::size_t count)
{
    return std::fwrite(bytes, 1, count, m_file.get()) == count;
}

bool ReplacingFile::rewriteStart(const void *bytes, std::size_t count)
{
    return std::fseek(m_file.get(), 0, SEEK_SET) == 0 && append(bytes, count);
}

bool ReplacingFile::commit()
{
    if (std::fclose(m_file.release()) != 0)
        return false;
    if (m_temporaryName.empty())
        return true;
    if (std::rename(m_temporaryName.c_str(), m_finalName.c_str()) != 0)
        return false;
    m_temporaryName.clear();
    return true;
}
