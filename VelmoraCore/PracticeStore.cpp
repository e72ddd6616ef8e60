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

std::unique_ptr<DurableFile::Temporary> PracticeStore::takeTemporary()
{
    prepareFolder();
    if (m_nextTemporary)
        return std::move(m_nextTemporary);
    return DurableFile::Temporary::make(m_url, m_calls);
}

void PracticeStore::makeNextTemporary()
{
    m_nextMade = m_sideThread.run([this] {
        try {
            m_nextTemporary = DurableFile::Temporary::make(m_url, m_calls);
        } catch (const std::filesystem::filesystem_error&) {
            // The next write makes its own, and reports what fails then.
        }
    });
}

std::shared_ptr<const PracticeState> PracticeStore::update(const Change& change, const WhileWriting& whileWriting)
{
    if (!m_state)
        throw PracticeError(PracticeError::notLoaded);
    auto changed = std::make_shared<const PracticeState>(change(*m_state));
    std::string bytes;
    try {
        bytes = changed->toJSON();
    } catch (...) {
        // A state that cannot be encoded is most likely invalid; say so.
        changed->validated();
        throw;
    }
    if (bytes.size() > sizeLimit)
        throw std::filesystem::filesystem_error("write file", m_url, std::make_error_code(std::errc::file_too_large));

    // The side thread is free again once the temporary made ahead is.
    if (m_nextMade.valid())
        m_nextMade.get();
    std::future<void> checked = m_sideThread.run([&upcoming = *changed, &whileWriting] {
        upcoming.validated();
        if (whileWriting)
            whileWriting(upcoming);
    });
    // Waited for on every path: the task refers to this frame. Its error
    // stops the rename.
    try {
        write(bytes, [&checked] {
            if (checked.valid())
                checked.get();
        });
    } catch (...) {
        if (checked.valid())
            checked.wait();
        throw;
    }
    m_state = std::move(changed);
    makeNextTemporary();
    return m_state;
}

void PracticeStore::write(const std::string& bytes, const std::function<void()>& beforeRename)
{
    try {
        DurableFile::write(m_url, takeTemporary(), bytes, beforeRename);
    } catch (const std::filesystem::filesystem_error& error) {
        m_folderPrepared = false;
        if (error.code() != std::errc::no_such_file_or_directory)
            throw;
        // The folder was removed while we ran (by the user, say): made
        // again, it takes the write as if nothing had happened.
        prepareFolder();
        DurableFile::write(m_url, DurableFile::Temporary::make(m_url, m_calls), bytes, beforeRename);
    }
}

} // namespace velmora
