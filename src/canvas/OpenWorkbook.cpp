#include "canvas/OpenWorkbook.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

// Keeps what was opened last, for the sheets that are turned to.
struct OpenWorkbook::Reader
{
    std::optional<Xlsx> book;
    State state = State::Unreadable;

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
            book = std::move(read);
            state = State::Read;
        }
    }

    void close()
    {
        book.reset();
        state = State::Unreadable;
    }

    Outcome outcome(int wanted) const
    {
        Outcome outcome{state, {}, 0, 0, {}};
        if (state != State::Read)
            return outcome;
        outcome.names = book->names();
        outcome.sheetCount = book->sheetCount();
        outcome.sheet = std::clamp(wanted, 0, static_cast<int>(outcome.names.size()) - 1);
        if (auto rows = book->rows(outcome.sheet))
            outcome.rows = std::make_shared<const SheetRows>(std::move(*rows));
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
    emit changed();
}

void OpenWorkbook::takeTreeChange(const TreeChange& change)
{
    if (!m_id.isEmpty() && (change.everything || change.nodes.contains(m_id)))
        read(From::File);
}

} // namespace corvelle
