#include "interface/canvas/FaceStore.h"

#include "base/MainThread.h"
#include "base/SerialQueue.h"
#include "platform/PictureFacts.h"

#include <QCache>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace corvelle {

namespace {

constexpr qint64 mostBytes = 128ll << 20;
constexpr int mostPictureKiB = 64 << 10; // of decoded pictures
constexpr int leastPictureSide = 256;
constexpr int greatestPictureSide = 2048;
constexpr int workerCount = 2;

} // namespace

// Two threads that draw what they are told, and the pictures that they have decoded.
class FaceStore::Workers
{
public:
    struct Job
    {
        QString key;
        FaceRequest request;
        double scale = 1;
        int version = 0;
    };
    using Done = std::function<void(const Job&, QImage image, int look)>;

    explicit Workers(Done done)
        : m_done(std::move(done))
    {
        m_pictures.setMaxCost(mostPictureKiB);
        for (int i = 0; i < workerCount; ++i)
            m_threads.emplace_back([this] { loop(); });
    }

    ~Workers()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ending = true;
            m_waiting.clear();
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }

    void setLook(Scheme scheme, double ratio, int look)
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.clear();
        m_scheme = scheme;
        m_ratio = ratio;
        m_look = look;
    }

    // Takes what waits out of the queue.
    std::deque<Job> takeWaiting()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_waiting, {});
    }

    void setWaiting(std::deque<Job> jobs)
    {
        if (jobs.empty())
            return;
        {
            const std::lock_guard lock(m_mutex);
            m_waiting = std::move(jobs);
        }
        m_changed.notify_all();
    }

    bool isIdle() const
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting.empty() && m_busy == 0;
    }

private:
    void loop()
    {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return m_ending || !m_waiting.empty(); });
            if (m_ending)
                return;
            Job job = std::move(m_waiting.front());
            m_waiting.pop_front();
            ++m_busy;
            const Scheme scheme = m_scheme;
            const double ratio = m_ratio;
            const int look = m_look;
            lock.unlock();
            QImage image = draw(job, scheme, ratio);
            m_done(job, std::move(image), look);
            lock.lock();
            --m_busy;
        }
    }

    QImage draw(Job& job, Scheme scheme, double ratio)
    {
        CardFace& face = job.request.face;
        const double pixels = job.scale * ratio;
        if (!job.request.picture.isNull())
            face.picture = picture(
                job.request.picture, std::max(face.size.width(), face.size.height()) * pixels);
        for (size_t i = 0; i < face.peeks.size() && i < job.request.peekPictures.size(); ++i)
            if (!job.request.peekPictures[i].isNull())
                face.peeks[i].picture = picture(job.request.peekPictures[i], 80 * pixels);
        return drawCardFace(face, scheme, job.scale, ratio);
    }

    // The picture with its longer side at least at `side` pixels, if it has as many: decoded at a
    // few sizes only.
    QImage picture(const PictureSource& source, double side)
    {
        int box = leastPictureSide;
        while (box < side && box < greatestPictureSide)
            box *= 2;
        const QString key =
            QString::number(box) + u'/' + QString::number(source.version) + source.path;
        {
            const std::lock_guard lock(m_pictureMutex);
            if (const QImage* known = m_pictures.object(key))
                return *known;
        }
        const QImage decoded = scaledPicture(source.path, QSize(box, box));
        const std::lock_guard lock(m_pictureMutex);
        m_pictures.insert(
            key, new QImage(decoded), static_cast<qsizetype>(decoded.sizeInBytes() / 1024) + 1);
        return decoded;
    }

    const Done m_done;

    mutable std::mutex m_mutex; // guards the queue and the look
    std::condition_variable m_changed;
    std::deque<Job> m_waiting;
    int m_busy = 0;
    bool m_ending = false;
    Scheme m_scheme = Scheme::Light;
    double m_ratio = 1;
    int m_look = 0;

    std::mutex m_pictureMutex; // guards the pictures
    QCache<QString, QImage> m_pictures;

    std::vector<std::thread> m_threads;
};

FaceStore::FaceStore(QObject* parent)
    : QObject(parent)
{
    // The store outlives its workers, which are joined in its destructor; what they still send is
    // dropped with it.
    m_workers = std::make_unique<Workers>([this, guard = QPointer<QObject>(this)](
                                              const Workers::Job& job, QImage image, int look) {
        SerialQueue::onMain(guard, [this, key = job.key, version = job.version, scale = job.scale,
                                       image = std::move(image), look]() mutable {
            took(key, version, std::move(image), scale, look);
        });
    });
}

FaceStore::~FaceStore() = default;

void FaceStore::setLook(Scheme scheme, double devicePixelRatio)
{
    if (scheme == m_scheme && devicePixelRatio == m_ratio)
        return;
    m_scheme = scheme;
    m_ratio = devicePixelRatio;
    ++m_look;
    for (Entry& entry : m_entries)
        entry.isBeingDrawn = false;
    m_workers->setLook(scheme, devicePixelRatio, m_look);
}

FaceStore::Face FaceStore::face(const QString& key)
{
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return {};
    found->lastTurn = m_turn;
    return {found->image, found->scale};
}

void FaceStore::invalidate(const QSet<QString>& keys)
{
    for (const QString& key : keys)
        if (const auto found = m_entries.find(key); found != m_entries.end())
            ++found->version;
}

void FaceStore::clear()
{
    m_workers->takeWaiting();
    m_entries.clear();
    m_bytes = 0;
}

void FaceStore::want(const std::vector<QString>& keys, double scale, const Describe& describe)
{
    Q_ASSERT(onMainThread());
    ++m_turn;
    QHash<QString, Workers::Job> waiting;
    for (Workers::Job& job : m_workers->takeWaiting()) {
        m_entries[job.key].isBeingDrawn = false;
        waiting.insert(job.key, std::move(job));
    }
    std::deque<Workers::Job> jobs;
    for (const QString& key : keys) {
        Entry& entry = m_entries[key];
        entry.lastTurn = m_turn;
        const bool isCurrent = entry.drawnVersion == entry.version && entry.scale == scale &&
                               entry.drawnLook == m_look;
        const bool isComing = entry.isBeingDrawn && entry.versionBeingDrawn == entry.version &&
                              entry.scaleBeingDrawn == scale;
        if (isCurrent || isComing)
            continue;
        entry.isBeingDrawn = true;
        entry.scaleBeingDrawn = scale;
        entry.versionBeingDrawn = entry.version;
        const auto known = waiting.find(key);
        if (known != waiting.end() && known->scale == scale && known->version == entry.version)
            jobs.push_back(std::move(*known));
        else
            jobs.push_back({key, describe(key), scale, entry.version});
    }
    m_workers->setWaiting(std::move(jobs));
}

bool FaceStore::isIdle() const
{
    return m_workers->isIdle();
}

void FaceStore::took(const QString& key, int version, QImage image, double scale, int look)
{
    const auto found = m_entries.find(key);
    if (found == m_entries.end() || look != m_look)
        return;
    if (found->versionBeingDrawn == version && found->scaleBeingDrawn == scale)
        found->isBeingDrawn = false;
    m_bytes += image.sizeInBytes() - found->image.sizeInBytes();
    found->image = std::move(image);
    found->scale = scale;
    found->drawnVersion = version;
    found->drawnLook = look;
    makeRoom();
    emit drawn(key);
}

void FaceStore::makeRoom()
{
    if (m_bytes <= mostBytes)
        return;
    std::vector<std::pair<qint64, QString>> byAge;
    for (auto entry = m_entries.cbegin(); entry != m_entries.cend(); ++entry)
        if (entry->lastTurn < m_turn && !entry->image.isNull())
            byAge.emplace_back(entry->lastTurn, entry.key());
    std::sort(byAge.begin(), byAge.end());
    // Down to four fifths, so that this isn't done again for the next face.
    for (const auto& [turn, key] : byAge) {
        if (m_bytes <= mostBytes / 5 * 4)
            return;
        m_bytes -= m_entries[key].image.sizeInBytes();
        m_entries.remove(key);
    }
}

} // namespace corvelle
