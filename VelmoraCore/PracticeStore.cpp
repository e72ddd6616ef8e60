#include "PracticeStore.h"

#include <cerrno>
#include <future>
#include <system_error>

#include "DurableFile.h"
#include "PracticeError.h"

namespace velmora {

PracticeStore::PracticeStore(std::filesystem::path url, FileSystemCalls& calls)
    : m_url(std::move(url))
    , m_calls(calls)
{
}

std::shared_ptr<const PracticeState> PracticeStore::load()
{
    m_state.reset();
    auto loaded = std::make_shared<PracticeState>();
    if (DurableFile::exists(m_url))
        *loaded = PracticeState::fromJSON(DurableFile::read(m_url, sizeLimit));
    loaded->validated();
    m_state = std::move(loaded);
    return m_state;
}

void PracticeStore::prepareFolder()
{
    if (m_folderPrepared)
        return;
    DurableFile::createFolders(m_url.parent_path(), m_calls);
    DurableFile::removeAbandonedTemporaries(m_url, m_calls);
    m_folderPrepared = true;
}

std::shared_ptr<const PracticeState> PracticeStore::update(const Change& change, const WhileWriting& whileWriting)
{
    if (!m_state)
        throw PracticeError(PracticeError::notLoaded);
    auto changed = std::make_shared<const PracticeState>(change(*m_state));
    changed->validated();
    const std::string bytes = changed->toJSON();
    if (bytes.size() > sizeLimit)
        throw std::filesystem::filesystem_error("write file", m_url, std::make_error_code(std::errc::file_too_large));
    if (!whileWriting) {
        write(bytes);
    } else {
        std::future<void> prepared = m_sideThread.run([&whileWriting, &upcoming = *changed]() noexcept { whileWriting(upcoming); });
        // Waited for on every path: the task refers to this frame.
        try {
            write(bytes);
        } catch (...) {
            prepared.wait();
            throw;
        }
        prepared.wait();
    }
    m_state = std::move(changed);
    return m_state;
}

void PracticeStore::write(const std::string& bytes)
{
    try {
        prepareFolder();
        DurableFile::write(m_url, bytes, m_calls);
    } catch (const std::filesystem::filesystem_error& error) {
        m_folderPrepared = false;
        if (error.code() != std::errc::no_such_file_or_directory)
            throw;
        // The folder was removed while we ran (by the user, say): made
        // again, it takes the write as if nothing had happened.
        prepareFolder();
        DurableFile::write(m_url, bytes, m_calls);
    }
}

} // namespace velmora
