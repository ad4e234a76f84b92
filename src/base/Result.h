// What a call that may fail returns: the value, or a Failure with one plain sentence.
#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <variant>

namespace corvelle {

// Why something failed. The sentence is for the person when a person asked, for the log otherwise.
class [[nodiscard]] Failure
{
public:
    explicit Failure(QString sentence, int systemError = 0)
        : m_sentence(std::move(sentence))
        , m_systemError(systemError)
    {}

    const QString& sentence() const { return m_sentence; }
    // The number (errno) of the system's error behind it; 0 for none.
    int systemError() const { return m_systemError; }

private:
    QString m_sentence;
    int m_systemError;
};

template<class T>
class [[nodiscard]] Result
{
public:
    Result(T value)
        : m_state(std::move(value))
    {}
    Result(Failure failure)
        : m_state(std::move(failure))
    {}

    explicit operator bool() const { return std::holds_alternative<T>(m_state); }

    // Only after the result was tested.
    T& operator*() { return std::get<T>(m_state); }
    const T& operator*() const { return std::get<T>(m_state); }
    T* operator->() { return &std::get<T>(m_state); }
    const T* operator->() const { return &std::get<T>(m_state); }
    const Failure& failure() const { return std::get<Failure>(m_state); }

private:
    std::variant<T, Failure> m_state;
};

// Success without a value: `return {};`.
template<>
class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Failure failure)
        : m_failure(std::move(failure))
    {}

    explicit operator bool() const { return !m_failure; }
    const Failure& failure() const { return *m_failure; }

private:
    std::optional<Failure> m_failure;
};

} // namespace corvelle
