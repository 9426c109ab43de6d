#include "eRecorder.h"

namespace KYR
{
namespace Host
{

eRecorder& eRecorder::Get()
{
    static eRecorder s_recorder;
    return s_recorder;
}

void eRecorder::Start()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_records.clear();
    m_bOn = true;
}

void eRecorder::Clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_records.clear();
}

void eRecorder::Add(eRecord const& r)
{
    if (!m_bOn)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_records.push_back(r);
}

std::vector<eRecord> eRecorder::Records() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_records;
}

void eRecorder::Stop() { m_bOn = false; }

std::vector<eRecord> eRecorder::Of(eRecord::Kind kind) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<eRecord> out;
    for (auto const& r : m_records)
        if (r.kind == kind)
            out.push_back(r);
    return out;
}

} // namespace Host
} // namespace KYR
