// The real program, started without a display in a person's own places, and spoken to through its
// scripted channel.
//
// Whatever a command should have and hasn't is a failure of the test, told with the command. The
// program runs with the rights of an ordinary person, also where the tests run as root: what may
// not be read, it can't read. It is killed with the test.
#pragma once

#include "e2e/Home.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPointF>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRectF>

#include <optional>

// The tree, as the program tells it.
class Tree
{
public:
    explicit Tree(const QJsonArray& nodes);

    // Live nodes by path; pages and websites, which have none, are left out.
    QStringList paths() const;
    QStringList titlesIn(const QString& folderPath) const; // sorted
    QJsonObject at(const QString& path) const;             // empty when there is none
    QString idAt(const QString& path) const { return at(path)["id"].toString(); }
    QJsonObject node(const QString& id) const;
    bool isInTrash(const QString& id) const { return node(id)["inTrash"].toBool(); }
    QStringList trashedPaths() const;
    bool hasTwins() const; // two live nodes with one path

    // By id, so that equal trees are equal.
    const QJsonArray& nodes() const { return m_nodes; }

private:
    QJsonArray m_nodes;
};

class Program
{
public:
    struct Options
    {
        QStringList arguments;
        // On top of the private places. A null value takes the variable away.
        QMap<QString, QString> environment;
        bool hasDriver = true;
    };

    explicit Program(const Home& home);
    Program(const Home& home, const Options& options);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // ---- the channel ----
    QJsonValue tell(const QString& verb, QJsonObject arguments = {}); // its result
    QJsonObject answerTo(const QByteArray& line); // the whole answer, whatever it says
    void settle();
    QJsonObject state() { return tell("state").toObject(); }
    Tree tree() { return Tree(tell("tree", {{"trash", true}}).toArray()); }

    // ---- input ----
    void key(const QString& name, int times = 1) { tell("key", {{"key", name}, {"times", times}}); }
    void mouse(const QString& type, QPointF at, const QString& button = "left",
        const QString& modifiers = {});
    void wheel(QPointF at, QPoint notches, const QString& modifiers = {});

    // ---- what is on the screen ----
    QString folder() { return state()["folder"].toString(); } // empty at the top
    QStringList selection();                                  // sorted
    QJsonObject alert() { return state()["alert"].toObject(); }
    QPointF onScreen(QPointF canvas);
    QPointF onScreen(const QJsonObject& node)
    {
        return onScreen(QPointF(node["x"].toDouble(), node["y"].toDouble()));
    }
    QPointF onCanvas(QPointF screen);

    // ---- its life ----
    qint64 pid() const { return m_process.processId(); }
    bool isRunning()
    {
        return !m_process.waitForFinished(0) && m_process.state() == QProcess::Running;
    }
    // The exit code; none when it still runs after the time, or died of a signal.
    std::optional<int> ended(int withinMs = 20'000);
    std::optional<int> quit();
    void kill();
    void terminate() { m_process.terminate(); }
    QByteArray log() const; // what it wrote to its standard error

private:
    QByteArray nextLine(const QByteArray& told);
    QPointF centreOfView(const QJsonObject& state) const;

    QProcess m_process;
    QString m_commands, m_log;
    QFile m_answers;
    QByteArray m_partial;
    int m_number = 0;
};

// Waits until the condition holds; false when it doesn't within the time.
template<class Condition>
bool waitUntil(Condition condition, int timeoutMs = 20'000)
{
    for (int waited = 0; !condition(); waited += 10) {
        if (waited > timeoutMs)
            return false;
        ::usleep(10'000);
    }
    return true;
}
