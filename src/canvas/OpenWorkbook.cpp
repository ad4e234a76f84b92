#include "canvas/OpenWorkbook.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// Of sheets that stay in memory, about. What is beyond is read again each time.
constexpr qint64 mostKeptBytes = 64'000'000;

qint64 bytesOf(const SheetRows& sheet)
{
    constexpr qint64 textHead = 24; // of each text that isn't empty
    qint64 bytes = 0;
    for (const auto& cells : sheet.rows) {
        bytes += static_cast<qint64>(sizeof(cells) + cells.capacity() * sizeof(SheetCell));
        for (const SheetCell& cell : cells)
            bytes += cell.text.isEmpty() ? 0 : textHead + cell.text.size() * 2;
    }
    return bytes;
}

} // namespace

// Keeps what was opened last, for the sheets that are turned to and searched.
struct OpenWorkbook::Reader
{
    std::optional<Xlsx> book;
    State state = State::Unreadable;
    int edition = 0;
    std::vector<Rows> kept; // by sheets; null for one that isn't
    qint64 keptBytes = 0;

    void open(const QString& path)
    {
        QFile file(path);
        const bool opened = QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly);
        if (opened && file.size() > Xlsx::mostBytes) {
            close();
            state = State::TooLarge;
            return;
        }
        // Read and not mapped: another program may cut the file short at any time.
        auto read = opened ? Xlsx::read(file.read(Xlsx::mostBytes)) : std::nullopt;
        // A file that is just being replaced comes back; till then what was read stands.
        if (read && !read->names().isEmpty()) {
            close();
            book = std::move(read);
            kept.resize(static_cast<size_t>(book->names().size()));
            state = State::Read;
        }
    }

    void close()
    {
        ++edition;
        book.reset();
        kept.clear();
        keptBytes = 0;
        state = State::Unreadable;
    }

    Rows rows(int sheet)
    {
        const auto at = static_cast<size_t>(sheet);
        if (at >= kept.size())
            return nullptr;
        if (kept[at])
            return kept[at];
        auto read = book->rows(sheet);
        if (!read)
            return nullptr;
        auto rows = std::make_shared<const SheetRows>(std::move(*read));
        const qint64 bytes = bytesOf(*rows);
        if (keptBytes + bytes <= mostKeptBytes) {
            keptBytes += bytes;
            kept[at] = rows;
        }
        return rows;
    }

    Outcome outcome(int wanted)
    {
        Outcome outcome;
        outcome.state = state;
        outcome.edition = edition;
        if (state != State::Read)
            return outcome;
        outcome.names = book->names();
        outcome.sheetCount = book->sheetCount();
        outcome.sheet = std::clamp(wanted, 0, static_cast<int>(outcome.names.size()) - 1);
        outcome.rows = rows(outcome.sheet);
        return outcome;
    }
};

OpenWorkbook::OpenWorkbook(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_reader(std::make_shared<Reader>())
    , m_queue(u"corvelle.sheet-open"_s)
{
    connect(&library, &Library::treeChanged, this, &OpenWorkbook::takeTreeChange);
}

OpenWorkbook::~OpenWorkbook() = default;

void OpenWorkbook::open(const QString& id)
{
    close();
    m_id = id;
    read(From::File);
}

void OpenWorkbook::close()
{
    ++m_turn;
    m_id.clear();
    m_state = State::Reading;
    m_names.clear();
    m_sheetCount = 0;
    m_sheet = 0;
    m_rows.reset();
    find({}, {});
    m_queue.async([reader = m_reader] { reader->close(); });
}

void OpenWorkbook::turnTo(int sheet)
{
    if (m_state != State::Read || sheet == m_sheet || sheet < 0 || sheet >= m_names.size())
        return;
    m_sheet = sheet;
    m_rows.reset();
    read(From::Memory);
    emit changed();
}

void OpenWorkbook::read(From from)
{
    const Node* node = m_library.node(m_id);
    if (!node)
        return;
    ++m_reading;
    m_queue.run(
        [reader = m_reader, path = from == From::File ? m_library.filePath(*node) : QString(),
            sheet = m_sheet] {
            if (!path.isEmpty())
                reader->open(path);
            return reader->outcome(sheet);
        },
        this,
        [this, turn = ++m_turn](Outcome outcome) {
            --m_reading;
            if (turn == m_turn)
                took(std::move(outcome));
        });
}

void OpenWorkbook::took(Outcome outcome)
{
    m_state = outcome.state;
    m_names = std::move(outcome.names);
    m_sheetCount = outcome.sheetCount;
    m_sheet = outcome.sheet;
    m_rows = std::move(outcome.rows);
    const bool isNew = std::exchange(m_edition, outcome.edition) != outcome.edition;
    emit changed();
    if (isNew && !m_found.words().isEmpty())
        findAgain();
}

void OpenWorkbook::takeTreeChange(const TreeChange& change)
{
    if (!m_id.isEmpty() && (change.everything || change.nodes.contains(m_id)))
        read(From::File);
}

// ---- finding ----

void OpenWorkbook::find(const QString& words, BookPlace from)
{
    m_found = WorkbookFind(words, static_cast<int>(m_names.size()), from);
    m_found.step(1);
    m_showsHit = true;
    ++m_findTurn;
    search();
    emit foundChanged();
}

// The file is another; the person stays where they are.
void OpenWorkbook::findAgain()
{
    const auto hit = m_found.hit();
    const bool waits = m_found.isWaiting();
    m_found = WorkbookFind(
        m_found.words(), static_cast<int>(m_names.size()), hit.value_or(BookPlace{m_sheet, {}}));
    m_found.step(hit || waits ? 1 : 0);
    m_showsHit = m_showsHit && waits;
    ++m_findTurn;
    search();
    emit foundChanged();
}

// One sheet after another, so that one that is turned to waits for no more than one, and so does
// the end of a search.
void OpenWorkbook::search()
{
    const auto sheet = m_found.nextSheet();
    if (!sheet || m_isSearching)
        return;
    m_isSearching = true;
    m_queue.run(
        [reader = m_reader, sheet = *sheet, words = m_found.words()] {
            const Rows rows = reader->rows(sheet);
            return rows ? findInSheet(*rows, words) : std::vector<CellPlace>();
        },
        this,
        [this, turn = m_findTurn](std::vector<CellPlace> found) {
            m_isSearching = false;
            if (turn == m_findTurn)
                tookFound(std::move(found));
            search();
        });
}

void OpenWorkbook::tookFound(std::vector<CellPlace> found)
{
    const bool moved = m_found.take(std::move(found));
    emit foundChanged();
    if (moved && m_showsHit)
        emit hitReached();
}

void OpenWorkbook::goToFound(int step)
{
    m_showsHit = true;
    const bool moved = m_found.step(step);
    emit foundChanged();
    if (moved)
        emit hitReached();
}

void OpenWorkbook::standForFinding(BookPlace place)
{
    m_found.stand(place);
    emit foundChanged();
}

} // namespace corvelle
