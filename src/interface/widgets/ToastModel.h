// Which toasts stand at a moment. A value: time comes in, nothing is drawn.
#pragma once

#include "interface/theme/Icons.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace corvelle {

struct Toast
{
    QString key; // of what it speaks about: a newer toast with the same key takes its place. Empty:
                 // of nothing else
    std::optional<Icon> icon;
    QString text;
    QString detail;
    QString action; // the words of its button; none when empty

    bool operator==(const Toast&) const = default;
};

// Times are milliseconds of any clock that doesn't run backwards.
class ToastModel
{
public:
    using Id = std::uint64_t;

    struct Standing
    {
        Id id = 0;
        Toast toast;
        std::int64_t endsAt = 0;
    };

    // The oldest first, as they stand from top to bottom.
    const std::vector<Standing>& toasts() const { return m_toasts; }

    // Adds the toast below the others, for 4.2 s, or 7 s with an action. One with the same key is
    // taken out first. More than `most` push the oldest out.
    Id show(const Toast& toast, std::int64_t now);
    static constexpr std::size_t most = 4;

    // Nothing happens when it is gone already.
    void dismiss(Id id);

    // Takes out those whose time is over; none while the model is held.
    void expire(std::int64_t now);

    // While the pointer or the keyboard is on the toasts their time stands still.
    void hold(std::int64_t now);
    void release(std::int64_t now);

    // When expire() has something to do; nothing while there are no toasts or they are held.
    std::optional<std::int64_t> nextEnd() const;

private:
    std::vector<Standing> m_toasts;
    std::optional<std::int64_t> m_heldSince;
    Id m_lastId = 0;
};

} // namespace corvelle
