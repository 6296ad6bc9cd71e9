#include "settings/linux/storecontent.h"

#include <QString>

#include <array>

using namespace Qt::StringLiterals;

// The rules by which the toolkit splits a file into lines and values are those of QSettings'
// documentation (Format::IniFormat) and, where that is silent, what QSettings does.

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

int digitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return 16;
}

/// Walks through bytes of which some belong together.
class Reader
{
public:
    explicit Reader(QByteArrayView bytes) : m_bytes(bytes) { }

    bool atEnd() const { return m_position >= m_bytes.size(); }
    qsizetype position() const { return m_position; }
    char peek() const { return m_bytes.at(m_position); }
    char next() { return m_bytes.at(m_position++); }
    template <typename Condition> void skipWhile(Condition condition)
    {
        while (!atEnd() && condition(peek()))
            ++m_position;
    }
    /// Skips the second half of a line end of two characters.
    void skipPartnerOf(char lineEnd)
    {
        if (isLineEnd(lineEnd) && !atEnd() && isLineEnd(peek()) && peek() != lineEnd)
            ++m_position;
    }
    /// Skips these bytes if they stand here.
    bool skip(QByteArrayView bytes)
    {
        const bool there = m_bytes.sliced(m_position).startsWith(bytes);
        m_position += there ? bytes.size() : 0;
        return there;
    }
    /// The number in this base that stands here; of a long one the last 16 bits.
    char16_t number(int base)
    {
        unsigned value = 0;
        while (!atEnd() && digitValue(peek()) < base)
            value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digitValue(next()));
        return static_cast<char16_t>(value);
    }

private:
    QByteArrayView m_bytes;
    qsizetype m_position = 0;
};

/// The beginning of a value, or of one of the values of a list, as the toolkit unescapes it.
class ValueStart
{
public:
    void add(char16_t character)
    {
        if (m_length < m_text.size())
            m_text[m_length++] = character;
    }
    bool isSerialisedObject() const
    {
        const QStringView text(m_text.data(), static_cast<qsizetype>(m_length));
        return text.startsWith("@Variant("_L1) || text.startsWith("@DateTime("_L1);
    }
    void clear() { m_length = 0; }

private:
    std::array<char16_t, sizeof "@DateTime(" - 1> m_text{}; // no mark is longer
    std::size_t m_length = 0;
};

/// Adds the character that an escape sequence stands for, if it stands for one.
void addEscaped(Reader &value, ValueStart &start)
{
    if (value.atEnd())
        return;
    if (digitValue(value.peek()) < 8) {
        start.add(value.number(8));
        return;
    }
    const char c = value.next();
    if (c == 'x' && !value.atEnd() && digitValue(value.peek()) < 16)
        start.add(value.number(16));
    else if (QByteArrayView("\"?'\\").contains(c))
        start.add(static_cast<uchar>(c));
    else if (QByteArrayView("abfnrtv").contains(c))
        start.add(u' '); // a control character, which no mark has
    else
        value.skipPartnerOf(c);
}

/// Whether the toolkit would decode an object in this value of a key, or in one of a list.
bool holdsSerialisedObject(QByteArrayView bytes)
{
    Reader value(bytes);
    ValueStart start;
    bool quoted = false;
    value.skipWhile(isBlank);
    while (!value.atEnd()) {
        if (value.skip("\xef\xbb\xbf")) // a byte order mark, which may not become part of the value
            continue;
        const char c = value.next();
        if (c == '\\') {
            addEscaped(value, start);
        } else if (c == '"') {
            quoted = !quoted;
            if (!quoted)
                value.skipWhile(isBlank);
        } else if (c == ',' && !quoted) {
            if (start.isSerialisedObject())
                return true;
            start.clear();
            value.skipWhile(isBlank);
        } else {
            start.add(static_cast<uchar>(c));
        }
    }
    return start.isSerialisedObject();
}

/// Whether there may be an '@', which every object begins with, among the characters that the bytes
/// stand for.
bool mayHoldObject(QByteArrayView content)
{
    if (content.contains('@'))
        return true;
    for (qsizetype i = content.indexOf('\\'); i >= 0; i = content.indexOf('\\', i + 1)) {
        const char next = i + 1 < content.size() ? content.at(i + 1) : '\0';
        if (next == 'x' || digitValue(next) < 8)
            return true;
    }
    return false;
}

/// One line of a file, which may go on behind a line end that is quoted or escaped.
struct Line
{
    qsizetype equals = -1; ///< where its value begins, relative to the line; -1 without one
    qsizetype cut = 0; ///< up to where a line that is too long is kept, relative to the line
    bool cutInQuotes = false;
};

/// Reads on to the end of the line.
Line readLine(Reader &content)
{
    Line line;
    const qsizetype begin = content.position();
    bool quoted = false;
    while (!content.atEnd()) {
        const char c = content.peek();
        if (!quoted && (isLineEnd(c) || c == ';'))
            break;
        content.next();
        if (c == '"')
            quoted = !quoted;
        else if (c == '=' && !quoted && line.equals < 0)
            line.equals = content.position() - begin;
        else if (c == '\\' && !content.atEnd())
            content.skipPartnerOf(content.next());
        if (content.position() - begin < longestStoreLine) { // a quote may follow
            line.cut = content.position() - begin;
            line.cutInQuotes = quoted;
        }
    }
    return line;
}

} // namespace

std::optional<QByteArray> harmlessContent(QByteArrayView content)
{
    // Of most stores this much tells it, and this is asked at every save.
    if (content.size() <= longestStoreLine && !mayHoldObject(content))
        return std::nullopt;

    QByteArray harmless;
    qsizetype copied = 0; // up to where the content is in `harmless`, or left out
    const auto copyUpTo = [&](qsizetype end) {
        harmless.append(content.sliced(copied, end - copied));
        copied = end;
    };

    Reader reader(content);
    while (!reader.atEnd()) {
        reader.skipWhile([](char c) { return isBlank(c) || isLineEnd(c); });
        const qsizetype begin = reader.position();
        if (!reader.atEnd() && reader.peek() == ';') {
            reader.skipWhile([](char c) { return !isLineEnd(c); }); // a comment
            continue;
        }
        const Line line = readLine(reader);
        const QByteArrayView text = content.sliced(begin, reader.position() - begin);
        if (line.equals >= 0 && holdsSerialisedObject(text.sliced(line.equals))) {
            copyUpTo(begin);
        } else if (text.size() > longestStoreLine) {
            copyUpTo(begin + line.cut);
            harmless.append(line.cutInQuotes ? "\"" : "");
        } else {
            continue;
        }
        copied = reader.position();
    }
    if (copied == 0)
        return std::nullopt;
    copyUpTo(content.size());
    return harmless;
}
