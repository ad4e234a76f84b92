#include "interface/widgets/ToastModel.h"

#include "interface/theme/Theme.h"

#include <algorithm>

namespace corvelle {

ToastModel::Id ToastModel::show(const Toast& toast, std::int64_t now)
{
    if (!toast.key.isEmpty())
        std::erase_if(
            m_toasts, [&](const Standing& standing) { return standing.toast.key == toast.key; });
    const int hold = toast.action.isEmpty() ? motion::toastHoldMs : motion::toastHoldWithActionMs;
    // Under a hold, time counts from its release, which adds what has passed since its beginning.
    const std::int64_t from = m_heldSince.value_or(now);
    m_toasts.push_back({++m_lastId, toast, from + hold});
    if (m_toasts.size() > most)
        m_toasts.erase(m_toasts.begin());
    return m_lastId;
}

void ToastModel::dismiss(Id id)
{
    std::erase_if(m_toasts, [id](const Standing& standing) { return standing.id == id; });
}

void ToastModel::expire(std::int64_t now)
{
    if (!m_heldSince)
        std::erase_if(m_toasts, [now](const Standing& standing) { return standing.endsAt <= now; });
}

void ToastModel::hold(std::int64_t now)
{
    if (!m_heldSince)
        m_heldSince = now;
}

void ToastModel::release(std::int64_t now)
{
    if (!m_heldSince)
        return;
    for (Standing& standing : m_toasts)
        standing.endsAt += now - *m_heldSince;
    m_heldSince.reset();
}

std::optional<std::int64_t> ToastModel::nextEnd() const
{
    if (m_toasts.empty() || m_heldSince)
        return std::nullopt;
    return std::min_element(m_toasts.begin(), m_toasts.end(),
        [](const Standing& a, const Standing& b) { return a.endsAt < b.endsAt; })
        ->endsAt;
}

} // namespace corvelle
