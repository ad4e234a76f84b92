// The scripted channel into the running program: lines of JSON in a file are commands, answers go
// to "<file>.out".
//
// Verbs call the same operations as the interface; pointer, wheel and key verbs post real input
// events to the window. Commands run one after another on the main thread; a `settle` holds back
// those behind it until it is answered.
#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QJsonObject>
#include <QObject>
#include <QTimer>

#include <deque>
#include <functional>
#include <map>
#include <optional>

namespace corvelle {

class Application;

class TestDriver : public QObject
{
    Q_OBJECT

public:
    // Polls the command file, which is made if it is missing.
    TestDriver(Application& application, const QString& file, QObject* parent = nullptr);

private:
    // What a verb gives: the result, or the sentence why not.
    struct Answer
    {
        QJsonValue result;
        QString error;
        bool isPending = false; // answered later
    };
    using Verb = std::function<Answer(const QJsonObject& arguments)>;

    void poll();
    void runNext();
    void answer(const QJsonObject& command, const Answer& answer);
    void addVerbs();
    void addInputVerbs();
    void addEditVerbs();
    void addPageVerbs();

    Answer settle(const QJsonObject& arguments);
    void checkSettled();
    QJsonObject state() const;
    Answer open(const QJsonObject& arguments);
    Answer make(const QJsonObject& arguments);
    Answer move(const QJsonObject& arguments);
    Answer place(const QJsonObject& arguments);
    Answer undo(bool redoes);
    std::optional<QByteArray> storedPage(const QString& id) const;
    Answer page(const QJsonObject& arguments);
    Answer write(const QJsonObject& arguments);
    Answer exportPage(const QJsonObject& arguments);
    Answer mouse(const QJsonObject& arguments);
    Answer key(const QJsonObject& arguments);
    Answer wheel(const QJsonObject& arguments);
    Answer drop(const QJsonObject& arguments);
    Answer shot(const QJsonObject& arguments);
    Answer perf(const QJsonObject& arguments);

    Application& m_application;
    QFile m_commands, m_answers;
    QByteArray m_partial; // the last line, while its end hasn't come
    std::deque<QByteArray> m_lines;
    std::map<QString, Verb> m_verbs;
    QTimer m_poll;

    struct Settling
    {
        QJsonObject command;
        QElapsedTimer since;
        double timeout = 30; // seconds
    };
    std::optional<Settling> m_settling;
};

} // namespace corvelle
