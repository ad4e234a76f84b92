#include "e2e/Program.h"

#include "support/Printing.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QSet>
#include <QUuid>

#include <algorithm>
#include <csignal>
#include <linux/capability.h>
#include <sys/prctl.h>

namespace {

constexpr int answerTimeoutMs = 60'000;
constexpr double screenScale = 1.1; // points of the screen for one of the canvas, at 100 %

// In the child, before it becomes the program.
void becomeOrdinary()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

QProcessEnvironment environmentFor(
    const Home& home, const Program::Options& options, const QString& commands)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys())
        if (name.startsWith("CORVELLE_"))
            environment.remove(name);
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("HOME", home.path("home"));
    environment.insert("XDG_RUNTIME_DIR", home.path("run"));
    environment.insert("XDG_CONFIG_HOME", home.path("config"));
    environment.insert("XDG_DATA_HOME", home.path("data"));
    environment.insert("XDG_CACHE_HOME", home.path("data/cache"));
    // Nobody's keyring or file manager is asked.
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + home.path("no-bus"));
    environment.insert("CORVELLE_LIBRARY", home.library());
    if (options.hasDriver)
        environment.insert("CORVELLE_DRIVER", commands);
    for (auto given = options.environment.cbegin(); given != options.environment.cend(); ++given) {
        if (given->isNull())
            environment.remove(given.key());
        else
            environment.insert(given.key(), *given);
    }
    return environment;
}

} // namespace

// ---- the tree ----

Tree::Tree(const QJsonArray& nodes)
{
    std::vector<QJsonObject> sorted;
    for (const QJsonValue& node : nodes)
        sorted.push_back(node.toObject());
    std::sort(sorted.begin(), sorted.end(), [](const auto& left, const auto& right) {
        return left["id"].toString() < right["id"].toString();
    });
    for (const QJsonObject& node : sorted)
        m_nodes.append(node);
}

QStringList Tree::paths() const
{
    QStringList paths;
    for (const QJsonValue& node : m_nodes)
        if (!node["inTrash"].toBool() && !node["path"].isNull())
            paths.append(node["path"].toString());
    paths.sort();
    return paths;
}

QStringList Tree::trashedPaths() const
{
    QStringList paths;
    for (const QJsonValue& node : m_nodes)
        if (node["inTrash"].toBool())
            paths.append(node["path"].toString());
    paths.sort();
    return paths;
}

QStringList Tree::titlesIn(const QString& folderPath) const
{
    const QJsonValue parent = folderPath.isEmpty() ? QJsonValue() : QJsonValue(idAt(folderPath));
    QStringList titles;
    for (const QJsonValue& node : m_nodes)
        if (!node["inTrash"].toBool() && node["parentID"] == parent)
            titles.append(node["title"].toString());
    titles.sort();
    return titles;
}

QJsonObject Tree::at(const QString& path) const
{
    for (const QJsonValue& node : m_nodes)
        if (!node["inTrash"].toBool() && node["path"] == path)
            return node.toObject();
    return {};
}

QJsonObject Tree::node(const QString& id) const
{
    for (const QJsonValue& node : m_nodes)
        if (node["id"] == id)
            return node.toObject();
    return {};
}

bool Tree::hasTwins() const
{
    const QStringList all = paths();
    return QSet<QString>(all.begin(), all.end()).size() != all.size();
}

// ---- its life ----

Program::Program(const Home& home)
    : Program(home, Options())
{}

Program::Program(const Home& home, const Options& options)
{
    const QString name = QUuid::createUuid().toString(QUuid::Id128).left(12);
    m_commands = home.path("commands-" + name);
    m_log = home.path("log-" + name);
    m_answers.setFileName(m_commands + ".out");
    m_process.setProcessEnvironment(environmentFor(home, options, m_commands));
    m_process.setChildProcessModifier(becomeOrdinary);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(m_log);
    m_process.start(CORVELLE_PROGRAM, options.arguments);
    EXPECT_TRUE(m_process.waitForStarted()) << m_process.errorString().toStdString();
}

Program::~Program()
{
    kill();
}

void Program::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

std::optional<int> Program::ended(int withinMs)
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(withinMs))
        return std::nullopt;
    if (m_process.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return m_process.exitCode();
}

std::optional<int> Program::quit()
{
    tell("quit");
    return ended();
}

QByteArray Program::log() const
{
    QFile file(m_log);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// ---- the channel ----

QByteArray Program::nextLine(const QByteArray& told)
{
    QElapsedTimer time;
    time.start();
    bool hasEnded = false;
    while (time.elapsed() < answerTimeoutMs) {
        if (m_answers.isOpen() || m_answers.open(QIODevice::ReadOnly))
            m_partial += m_answers.readAll();
        if (const qsizetype end = m_partial.indexOf('\n'); end >= 0) {
            const QByteArray line = m_partial.left(end);
            m_partial.remove(0, end + 1);
            return line;
        }
        // Its last words may have come between the look at them and its end.
        if (hasEnded) {
            ADD_FAILURE() << "The program ended before it answered " << told.toStdString()
                          << "\nIt wrote:\n"
                          << log().toStdString();
            return {};
        }
        // Also the pause between two looks.
        hasEnded = m_process.state() == QProcess::NotRunning || m_process.waitForFinished(5);
    }
    ADD_FAILURE() << "No answer to " << told.toStdString();
    return {};
}

QJsonObject Program::answerTo(const QByteArray& line)
{
    QFile commands(m_commands);
    EXPECT_TRUE(commands.open(QIODevice::Append));
    commands.write(line + '\n');
    commands.close();
    return QJsonDocument::fromJson(nextLine(line)).object();
}

QJsonValue Program::tell(const QString& verb, QJsonObject arguments)
{
    arguments["n"] = ++m_number;
    arguments["do"] = verb;
    const QByteArray line = QJsonDocument(arguments).toJson(QJsonDocument::Compact);
    const QJsonObject answer = answerTo(line);
    EXPECT_TRUE(answer["ok"].toBool())
        << line.toStdString() << ": " << answer["error"].toString().toStdString();
    EXPECT_EQ(answer["n"].toInt(), m_number);
    return answer["result"];
}

void Program::settle()
{
    const QJsonObject result = tell("settle").toObject();
    EXPECT_TRUE(result["idle"].toBool())
        << "still busy: " << QJsonDocument(result["busy"].toArray()).toJson().toStdString();
}

// ---- input ----

void Program::mouse(
    const QString& type, QPointF at, const QString& button, const QString& modifiers)
{
    tell("mouse",
        {{"type", type}, {"x", at.x()}, {"y", at.y()}, {"button", button}, {"mods", modifiers}});
}

void Program::wheel(QPointF at, QPoint notches, const QString& modifiers)
{
    tell("wheel", {{"x", at.x()}, {"y", at.y()}, {"dx", notches.x() * 120},
                      {"dy", notches.y() * 120}, {"mods", modifiers}});
}

// ---- what is on the screen ----

QStringList Program::selection()
{
    QStringList ids;
    for (const QJsonValue& id : state()["selection"].toArray())
        ids.append(id.toString());
    ids.sort();
    return ids;
}

QPointF Program::centreOfView(const QJsonObject& state) const
{
    const QJsonArray viewport = state["viewport"].toArray();
    return QPointF(viewport[0].toDouble() / 2, viewport[1].toDouble() / 2);
}

QPointF Program::onScreen(QPointF canvas)
{
    const QJsonObject now = state();
    const QJsonObject camera = now["camera"].toObject();
    const QPointF middle(camera["x"].toDouble(), camera["y"].toDouble());
    return centreOfView(now) + (canvas - middle) * camera["zoom"].toDouble() * screenScale;
}

QPointF Program::onCanvas(QPointF screen)
{
    const QJsonObject now = state();
    const QJsonObject camera = now["camera"].toObject();
    const QPointF middle(camera["x"].toDouble(), camera["y"].toDouble());
    return middle + (screen - centreOfView(now)) / (camera["zoom"].toDouble() * screenScale);
}
