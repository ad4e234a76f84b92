#include "disk/DiskSync.h"

#include "base/Log.h"
#include "base/MainThread.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int deletedQuietMs = 2'000;
constexpr int mostFailedPasses = 5; // in a row that are tried again

} // namespace

DiskSync::DiskSync(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_apply(library)
    , m_queue(u"corvelle.disk-pass"_s)
{
    for (const auto& [timer, act] : {std::pair(&m_soon, &DiskSync::flush),
             std::pair(&m_settleSoon, &DiskSync::settleDeferred)}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, act);
    }
    m_deletedQuiet.setSingleShot(true);
    m_deletedQuiet.setInterval(deletedQuietMs);
    connect(&m_deletedQuiet, &QTimer::timeout, this,
        [this] { emit deletedElsewhere(std::exchange(m_deletedElsewhere, 0)); });
    connect(&m_apply, &DiskApply::filesChanged, this, &DiskSync::filesChanged);
    connect(&m_apply, &DiskApply::removedOnDisk, this, &DiskSync::removedOnDisk);
    connect(this, &DiskSync::removedOnDisk, this, &DiskSync::countDeleted);
    connect(&library, &Library::treeChanged, this, [this](const TreeChange& change) {
        if (m_isIndexed)
            m_index.update(m_library, change);
    });
}

DiskSync::~DiskSync()
{
    m_stop.request_stop();
}

void DiskSync::countDeleted(const std::map<QString, double>& times)
{
    m_deletedElsewhere += static_cast<int>(times.size());
    m_deletedQuiet.start();
}

void DiskSync::took(Result<DiskPass> pass)
{
    if (!pass) {
        logLine(u"disk pass: "_s + pass.failure().sentence());
        // What was told of these folders isn't told again.
        if (++m_failedPasses <= mostFailedPasses) {
            if (m_request.everything)
                lookAtEverythingLater();
            else
                defer(m_request.folders);
        }
        endPass();
        return;
    }
    m_failedPasses = 0;
    m_apply.run(std::move(*pass), [this](DiskApply::Done done) { applied(done); });
}

void DiskSync::applied(const DiskApply::Done& done)
{
    if (done.movedFolder)
        m_rounds = 0; // one step further down
    const bool again = (done.lookAgain || done.overtaken) && ++m_rounds < mostRounds;
    m_request.trees.unite(done.freshFolders);
    m_request.folders.unite(done.lookAlso);
    if (m_request.everything && !m_isIndexed) {
        m_nameCase = done.nameCase;
        m_index.build(m_library, m_nameCase);
        m_isIndexed = true;
    }
    markSpaces(done.away);
    if (again) {
        runPass();
        return;
    }
    if (!done.again.isEmpty())
        defer(done.again);
    endPass();
}

// A space whose folder went away keeps its cards; they show that their files can't be found.
void DiskSync::markSpaces(const QSet<QString>& away)
{
    if (away.isEmpty() && m_library.missingLinks().isEmpty())
        return;
    QSet<QString> gone, here;
    for (const Space& space : m_library.tree().spaces()) {
        if (!m_request.everything && !m_request.folders.contains(space.folder))
            continue;
        if (away.contains(space.folder)) {
            DiskRequest all;
            all.trees = {space.folder};
            for (const DiskPlan::Known& known : memoryOf(m_library, m_index, all).known)
                gone.insert(known.id);
        } else {
            for (const QString& id : m_library.missingLinks())
                if (const Node* node = m_library.node(id);
                    node && liesBelow(node->path, space.folder))
                    here.insert(id);
        }
    }
    m_library.tookMissing(gone, here);
}

} // namespace corvelle
