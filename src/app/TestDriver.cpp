#include "app/TestDriver.h"

#include "app/Application.h"
#include "app/NodeJson.h"
#include "store/StatementCounter.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMimeData>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWindow>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int pollMs = 30;
constexpr double defaultSettleSeconds = 30;
constexpr int mostTimes = 10'000; // of one key

QStringList strings(const QJsonValue& value)
{
    QStringList result;
    for (const QJsonValue& entry : value.toArray())
        result.append(entry.toString());
    return result;
}

QSet<QString> keySet(const QJsonValue& value)
{
    const QStringList list = strings(value);
    return QSet<QString>(list.begin(), list.end());
}

Qt::KeyboardModifiers modifiersFrom(const QJsonValue& value)
{
    const QStringList names =
        value.isArray() ? strings(value) : value.toString().split(u'+', Qt::SkipEmptyParts);
    Qt::KeyboardModifiers modifiers;
    for (const QString& name : names) {
        if (name.compare(u"Ctrl", Qt::CaseInsensitive) == 0)
            modifiers |= Qt::ControlModifier;
        else if (name.compare(u"Shift", Qt::CaseInsensitive) == 0)
            modifiers |= Qt::ShiftModifier;
        else if (name.compare(u"Alt", Qt::CaseInsensitive) == 0)
            modifiers |= Qt::AltModifier;
    }
    return modifiers;
}

QJsonObject cameraJson(const Camera& camera)
{
    return {{u"x"_s, camera.x}, {u"y"_s, camera.y}, {u"zoom"_s, camera.zoom}};
}

} // namespace

TestDriver::TestDriver(Application& application, const QString& file, QObject* parent)
    : QObject(parent)
    , m_application(application)
    , m_commands(file)
    , m_answers(file + u".out"_s)
{
    if (!m_commands.open(QIODevice::ReadWrite) || !m_answers.open(QIODevice::Append))
        return;
    addVerbs();
    addInputVerbs();
    addEditVerbs();
    addPageVerbs();
    m_poll.setInterval(pollMs);
    connect(&m_poll, &QTimer::timeout, this, &TestDriver::poll);
    m_poll.start();
}

void TestDriver::poll()
{
    m_partial += m_commands.readAll();
    for (qsizetype end; (end = m_partial.indexOf('\n')) >= 0; m_partial.remove(0, end + 1))
        m_lines.push_back(m_partial.left(end));
    if (m_settling)
        checkSettled();
    runNext();
}

void TestDriver::runNext()
{
    while (!m_settling && !m_lines.empty()) {
        const QByteArray line = m_lines.front().trimmed();
        m_lines.pop_front();
        if (line.isEmpty())
            continue;
        const QJsonDocument document = QJsonDocument::fromJson(line);
        const QJsonObject command = document.object();
        if (!document.isObject()) {
            answer(command, {{}, u"This line is not a JSON object."_s});
            continue;
        }
        const QString name = command[u"do"].toString();
        const auto verb = m_verbs.find(name);
        if (verb == m_verbs.end()) {
            answer(command, {{}, u"There is no verb “%1”."_s.arg(name)});
            continue;
        }
        const Answer given = verb->second(command);
        // Commands are gestures of their own, however many the event loop finds at once.
        m_application.undoManager().closeEventGroup();
        if (!given.isPending)
            answer(command, given);
    }
}

void TestDriver::answer(const QJsonObject& command, const Answer& given)
{
    QJsonObject line;
    if (command.contains(u"n"))
        line[u"n"] = command[u"n"];
    line[u"ok"] = given.error.isEmpty();
    if (given.error.isEmpty())
        line[u"result"] = given.result;
    else
        line[u"error"] = given.error;
    m_answers.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    m_answers.flush();
}

void TestDriver::addVerbs()
{
    Library& library = m_application.library();
    CanvasModel& canvas = m_application.canvas();
    const auto done = [] { return Answer{QJsonValue(QJsonObject()), {}}; };

    m_verbs[u"ping"_s] = [&library](const QJsonObject&) {
        return Answer{QJsonObject{{u"pid"_s, static_cast<qint64>(::getpid())},
                          {u"version"_s, QCoreApplication::applicationVersion()},
                          {u"library"_s, library.root()}},
            {}};
    };
    m_verbs[u"settle"_s] = [this](const QJsonObject& a) { return settle(a); };
    m_verbs[u"state"_s] = [this](const QJsonObject&) { return Answer{state(), {}}; };
    m_verbs[u"tree"_s] = [&library](const QJsonObject& a) {
        QJsonArray nodes;
        library.tree().eachNode([&](const Node& node, const SeenFile& seen) {
            const bool inTrash = library.isInTrash(node.id);
            if (!inTrash || a[u"trash"].toBool())
                nodes.append(nodeJson(node, seen, inTrash));
        });
        return Answer{nodes, {}};
    };
    m_verbs[u"node"_s] = [&library](const QJsonObject& a) {
        const Node* node = library.node(a[u"id"].toString());
        return Answer{node ? QJsonValue(nodeJson(
                                 *node, library.tree().seen(node->id), library.isInTrash(node->id)))
                           : QJsonValue(),
            {}};
    };
    m_verbs[u"find"_s] = [&library](const QJsonObject& a) {
        QJsonArray ids;
        library.tree().eachNode([&](const Node& node, const SeenFile&) {
            if (node.title == a[u"title"].toString() && !library.isInTrash(node.id))
                ids.append(node.id);
        });
        return Answer{ids, {}};
    };
    m_verbs[u"open"_s] = [this](const QJsonObject& a) { return open(a); };
    m_verbs[u"close"_s] = [this, done](const QJsonObject&) {
        m_application.closeOverlay();
        return done();
    };
    m_verbs[u"up"_s] = [&canvas, done](const QJsonObject&) {
        canvas.goUp();
        return done();
    };
    m_verbs[u"back"_s] = [&canvas, done](const QJsonObject&) {
        canvas.goBack();
        return done();
    };
    m_verbs[u"forward"_s] = [&canvas, done](const QJsonObject&) {
        canvas.goForward();
        return done();
    };
    m_verbs[u"camera"_s] = [this, &canvas, done](const QJsonObject& a) {
        const Camera now = canvas.camera();
        const Camera wanted{
            a[u"x"].toDouble(now.x), a[u"y"].toDouble(now.y), a[u"zoom"].toDouble(now.zoom)};
        if (a[u"animated"].toBool())
            m_application.window().canvasView().glideTo(wanted);
        else
            canvas.setCamera(wanted);
        return done();
    };
    m_verbs[u"select"_s] = [&canvas, done](const QJsonObject& a) {
        canvas.select(keySet(a[u"ids"]));
        return done();
    };
    m_verbs[u"shot"_s] = [this](const QJsonObject& a) { return shot(a); };
    m_verbs[u"perf"_s] = [this](const QJsonObject& a) { return perf(a); };
    m_verbs[u"quit"_s] = [this, done](const QJsonObject&) {
        QMetaObject::invokeMethod(
            qApp, [this] { m_application.quit(); }, Qt::QueuedConnection);
        return done();
    };
}

void TestDriver::addInputVerbs()
{
    m_verbs[u"key"_s] = [this](const QJsonObject& a) { return key(a); };
    m_verbs[u"text"_s] = [this](const QJsonObject& a) {
        for (const QChar c : a[u"text"].toString()) {
            m_application.postKey(QEvent::KeyPress, 0, Qt::NoModifier, c);
            m_application.postKey(QEvent::KeyRelease, 0, Qt::NoModifier, c);
        }
        return Answer{QJsonObject(), {}};
    };
    m_verbs[u"mouse"_s] = [this](const QJsonObject& a) { return mouse(a); };
    m_verbs[u"wheel"_s] = [this](const QJsonObject& a) { return wheel(a); };
    m_verbs[u"drop"_s] = [this](const QJsonObject& a) { return drop(a); };
    m_verbs[u"clipboard"_s] = [](const QJsonObject&) {
        const QMimeData* held = QApplication::clipboard()->mimeData();
        QJsonObject types;
        for (const QString& type : held ? held->formats() : QStringList())
            types[type] = QString::fromUtf8(held->data(type));
        return Answer{types, {}};
    };
}

// ---- waiting ----

TestDriver::Answer TestDriver::settle(const QJsonObject& arguments)
{
    m_settling.emplace(
        Settling{arguments, {}, arguments[u"timeout"].toDouble(defaultSettleSeconds)});
    m_settling->since.start();
    m_application.diskSync().catchUp();
    m_application.linkSync().catchUp();
    return {{}, {}, true};
}

void TestDriver::checkSettled()
{
    const QStringList busy = m_application.busyWith();
    const double waited = static_cast<double>(m_settling->since.elapsed()) / 1000;
    if (!busy.isEmpty() && waited < m_settling->timeout)
        return;
    QJsonObject result{{u"idle"_s, busy.isEmpty()}, {u"waited"_s, waited}};
    if (!busy.isEmpty())
        result[u"busy"] = QJsonArray::fromStringList(busy);
    const QJsonObject command = m_settling->command;
    m_settling.reset();
    answer(command, {result, {}});
}

// ---- the state ----

QJsonObject TestDriver::state() const
{
    const CanvasModel& canvas = m_application.canvas();
    const Library& library = m_application.library();
    QJsonArray selection;
    for (const QString& key : canvas.selection())
        selection.append(key);
    QJsonObject result{
        {u"folder"_s, canvas.folderID().isEmpty() ? QJsonValue() : QJsonValue(canvas.folderID())},
        {u"camera"_s, cameraJson(canvas.camera())},
        {u"viewport"_s, QJsonArray{canvas.viewport().width(), canvas.viewport().height()}},
        {u"selection"_s, selection},
        {u"mounted"_s, static_cast<qint64>(canvas.mounted().size())},
        {u"open"_s, m_application.window().openedJson()},
        {u"panes"_s, QJsonArray()},
        {u"palette"_s, QJsonValue()},
        {u"lastFailure"_s,
            library.lastFailure().isEmpty() ? QJsonValue() : QJsonValue(library.lastFailure())},
        {u"revision"_s, library.revision()},
        {u"editing"_s, m_application.window().canvasView().isEditing()},
        {u"trashOpen"_s, m_application.window().showsTrash()},
        {u"menu"_s, m_application.window().menuJson()},
        {u"toasts"_s, m_application.window().toastsJson()},
    };
    if (const auto alert = m_application.window().alertJson())
        result[u"alert"] = *alert;
    if (!library.loadError().isEmpty())
        result[u"loadError"] = library.loadError();
    return result;
}

TestDriver::Answer TestDriver::open(const QJsonObject& arguments)
{
    const QString id = arguments[u"id"].toString();
    const Node* node = m_application.library().node(id);
    if (!node)
        return {{}, u"There is no item with this id."_s};
    m_application.canvas().openCard(id);
    if (arguments.contains(u"find"))
        m_application.window().findInOpened(arguments[u"find"].toString());
    return {QJsonObject(), {}};
}

// ---- input ----

TestDriver::Answer TestDriver::key(const QJsonObject& arguments)
{
    const QKeySequence sequence =
        QKeySequence::fromString(arguments[u"key"].toString(), QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0].key() == Qt::Key_unknown)
        return {{}, u"There is no key of this name."_s};
    const QString type = arguments[u"type"].toString();
    if (!type.isEmpty() && type != u"press" && type != u"release")
        return {{}, u"A key event is a press or a release; without a type it is both."_s};
    const int times = std::clamp(arguments[u"times"].toInt(1), 1, mostTimes);
    for (int i = 0; i < times; ++i) {
        if (type != u"release")
            m_application.postKey(
                QEvent::KeyPress, sequence[0].key(), sequence[0].keyboardModifiers(), {});
        if (type != u"press")
            m_application.postKey(
                QEvent::KeyRelease, sequence[0].key(), sequence[0].keyboardModifiers(), {});
    }
    return {QJsonObject(), {}};
}

TestDriver::Answer TestDriver::mouse(const QJsonObject& arguments)
{
    const QPointF at(arguments[u"x"].toDouble(), arguments[u"y"].toDouble());
    const QString type = arguments[u"type"].toString();
    const QString name = arguments[u"button"].toString(u"left"_s);
    const Qt::MouseButton button = name == u"right"     ? Qt::RightButton
                                   : name == u"middle"  ? Qt::MiddleButton
                                   : name == u"back"    ? Qt::BackButton
                                   : name == u"forward" ? Qt::ForwardButton
                                                        : Qt::LeftButton;
    const Qt::KeyboardModifiers modifiers = modifiersFrom(arguments[u"mods"]);
    if (type == u"press")
        m_application.postMouse(QEvent::MouseButtonPress, at, button, modifiers);
    else if (type == u"release")
        m_application.postMouse(QEvent::MouseButtonRelease, at, button, modifiers);
    else if (type == u"move")
        m_application.postMouse(QEvent::MouseMove, at, Qt::NoButton, modifiers);
    else if (type == u"click" || type == u"double") {
        m_application.postMouse(QEvent::MouseButtonPress, at, button, modifiers);
        m_application.postMouse(QEvent::MouseButtonRelease, at, button, modifiers);
        if (type == u"double") {
            m_application.postMouse(QEvent::MouseButtonDblClick, at, button, modifiers);
            m_application.postMouse(QEvent::MouseButtonRelease, at, button, modifiers);
        }
    } else {
        return {{}, u"A mouse event is a press, move, release, click or double."_s};
    }
    return {QJsonObject(), {}};
}

TestDriver::Answer TestDriver::drop(const QJsonObject& arguments)
{
    auto* dropped = new QMimeData;
    QList<QUrl> urls;
    for (const QString& url : strings(arguments[u"urls"]))
        urls.append(url.startsWith(u'/') ? QUrl::fromLocalFile(url) : QUrl(url));
    if (!urls.isEmpty())
        dropped->setUrls(urls);
    if (const QString text = arguments[u"text"].toString(); !text.isEmpty())
        dropped->setText(text);
    if (const QString html = arguments[u"html"].toString(); !html.isEmpty())
        dropped->setHtml(html);
    m_application.postDrop(
        QPointF(arguments[u"x"].toDouble(), arguments[u"y"].toDouble()), dropped);
    return {QJsonObject(), {}};
}

TestDriver::Answer TestDriver::wheel(const QJsonObject& arguments)
{
    const QPointF at(arguments[u"x"].toDouble(), arguments[u"y"].toDouble());
    const QPoint d(arguments[u"dx"].toInt(), arguments[u"dy"].toInt());
    const bool pixels = arguments[u"pixel"].toBool();
    m_application.postWheel(
        at, pixels ? d : QPoint(), pixels ? QPoint() : d, modifiersFrom(arguments[u"mods"]));
    return {QJsonObject(), {}};
}

// ---- looking ----

TestDriver::Answer TestDriver::shot(const QJsonObject& arguments)
{
    QWidget& window = m_application.window();
    const QString part = arguments[u"part"].toString(u"window"_s);
    if (part != u"window" && part != u"canvas")
        return {{}, u"There is no such part of the window."_s};
    const QPixmap picture =
        part == u"canvas" ? m_application.window().canvasView().grab() : window.grab();
    if (!picture.save(arguments[u"file"].toString(), "PNG"))
        return {{}, u"The picture couldn’t be written there."_s};
    return {QJsonObject{{u"width"_s, picture.width()}, {u"height"_s, picture.height()}}, {}};
}

TestDriver::Answer TestDriver::perf(const QJsonObject& arguments)
{
    FrameMeter& meter = m_application.window().canvasView().frames();
    const FrameSummary frames = meter.summary();
    const StatementCounts statements = mainThreadStatements();
    const QJsonObject result{{u"frames"_s, frames.frames}, {u"p50"_s, frames.p50Ms},
        {u"p95"_s, frames.p95Ms}, {u"max"_s, frames.maxMs}, {u"slow"_s, frames.slow},
        {u"reads"_s, statements.reads}, {u"writes"_s, statements.writes},
        {u"longestBlock"_s, m_application.longestEventMs()},
        {u"firstCardsAt"_s, m_application.window().canvasView().firstCardsAt()},
        {u"firstFacesAt"_s, m_application.window().canvasView().firstFacesAt()}};
    if (arguments[u"reset"].toBool()) {
        meter.reset();
        resetMainThreadStatements();
        m_application.resetLongestEvent();
    }
    return {result, {}};
}

} // namespace corvelle
