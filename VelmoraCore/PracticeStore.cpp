#include "PracticeStore.h"

#include "DurableFile.h"
#include "PracticeError.h"

namespace velmora {

PracticeStore::PracticeStore(std::filesystem::path url, FileSystemCalls& calls)
    : m_url(std::move(url))
    , m_calls(calls)
{
}

PracticeState PracticeStore::load()
{
    m_state.reset();
    PracticeState loaded;
    if (DurableFile::exists(m_url))
        loaded = PracticeState::fromJSON(DurableFile::read(m_url)).validated();
    m_state = std::move(loaded);
    return *m_state;
}

PracticeState PracticeStore::update(const Change& change)
{
    if (!m_state)
        throw PracticeError(PracticeError::notLoaded);
    PracticeState changed = change(*m_state);
    changed.validated();
    const std::string bytes = changed.toJSON();
    DurableFile::createFolders(m_url.parent_path(), m_calls);
    DurableFile::write(m_url, bytes, m_calls);
    m_state = std::move(changed);
    return *m_state;
}

} // namespace velmora
