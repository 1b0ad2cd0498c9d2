#include "host/BodyLimits.h"

#include <QRegularExpression>
#include <QStringView>
#include <algorithm>
#include <cstddef>
#include <vector>

namespace quillet::host {

namespace {

constexpr std::size_t kMostCells = 1000;
constexpr int kWidestSpan = 20;
constexpr qsizetype kMostWork = 8192;

std::size_t cellsIn(std::string_view html) {
    const auto isOneOf = [](char character, std::string_view characters) {
        return characters.find(character) != std::string_view::npos;
    };
    std::size_t cells = 0;
    for (std::size_t at = html.find('<'); at != std::string_view::npos; at = html.find('<', at)) {
        at = std::min(html.find_first_not_of(" \t\r\n\f", at + 1), html.size());
        const std::string_view name = html.substr(at, 2);
        cells += name.size() == 2 && isOneOf(name[0], "tT") && isOneOf(name[1], "dDhH") ? 1 : 0;
    }
    return cells;
}

// A name or a value in a tag, without its quotes.
struct Word {
    QStringView text;
    bool isPlain = true;  // neither in quotes nor with a character written as an entity
};

void skipSpaces(QStringView& rest) {
    while (!rest.empty() && rest.front().isSpace()) {
        rest = rest.mid(1);
    }
}

bool isQuote(QChar character) {
    return character == QLatin1Char('"') || character == QLatin1Char('\'');
}

Word takeQuotedWord(QStringView& rest) {
    const QChar quote = rest.front();
    qsizetype end = rest.indexOf(quote, 1);
    while (quote == QLatin1Char('\'') && end > 0 && rest[end - 1] == QLatin1Char('\\')) {
        end = rest.indexOf(quote, end + 1);
    }
    end = end < 0 ? rest.size() : end;
    const Word word{rest.mid(1, end - 1), false};
    rest = rest.mid(std::min(end + 1, rest.size()));
    return word;
}

// A word as the toolkit's parser ends it.
Word takeWord(QStringView& rest) {
    if (!rest.empty() && isQuote(rest.front())) {
        return takeQuotedWord(rest);
    }
    const auto endsWord = [](QChar character) {
        return QStringView(u"<>=/").contains(character) || character.isSpace();
    };
    const auto* const end = std::find_if(rest.begin(), rest.end(), endsWord);
    const QStringView text = rest.first(end - rest.begin());
    rest = rest.mid(text.size());
    return {text, !text.contains(QLatin1Char('&'))};
}

bool isOneOf(QStringView name, std::initializer_list<QStringView> names) {
    return std::any_of(names.begin(), names.end(), [name](QStringView each) {
        return name.compare(each, Qt::CaseInsensitive) == 0;
    });
}

// The span that a value tells; 0 for one that is too wide, or no plain number.
int spanOf(QStringView value) {
    static const QRegularExpression number(QStringLiteral("^\\s*0*([0-9]{1,2})\\s*$"));
    const auto match = number.match(value.toString());
    const int span = match.captured(1).toInt();
    return match.hasMatch() && span <= kWidestSpan ? std::max(span, 1) : 0;
}

// What the toolkit has to do for the tables of a text. The counts hold however the tags are nested,
// and also where the toolkit takes some of them for a style sheet.
struct TableWork {
    qsizetype tables = 0;
    qsizetype rows = 0;
    qsizetype places = 0;  // of the grid that cells cover
    bool isTooWide = false;
    bool isTangled = false;  // some tag is closed out of turn
    std::vector<QStringView> open;

    // The largest grid is one row of all cells above rows that are empty. With each level of
    // nesting the work doubles. Of tangled tables the toolkit may never see the end.
    bool isTooMuch() const {
        qsizetype work = std::max<qsizetype>(rows, 1) * places;
        for (qsizetype level = 0; level < tables && work <= kMostWork; ++level) {
            work *= 2;
        }
        return work > kMostWork || (places > 0 && isTangled);
    }
};

// Where a tag may stand in a table; true for what is no part of one.
bool isInPlace(QStringView name, QStringView parent) {
    if (isOneOf(name, {u"td", u"th"})) {
        return isOneOf(parent, {u"tr"});
    }
    if (isOneOf(name, {u"tr"})) {
        return isOneOf(parent, {u"table", u"tbody", u"thead", u"tfoot"});
    }
    if (isOneOf(name, {u"tbody", u"thead", u"tfoot", u"caption"})) {
        return isOneOf(parent, {u"table"});
    }
    return !isOneOf(parent, {u"table", u"tbody", u"thead", u"tfoot", u"tr"});
}

void open(QStringView name, TableWork& work) {
    if (isOneOf(name, {u"br", u"img", u"hr", u"meta", u"link", u"input", u"col", u"wbr"})) {
        return;
    }
    work.isTangled =
        work.isTangled || !isInPlace(name, work.open.empty() ? QStringView() : work.open.back());
    work.open.push_back(name);
}

void close(QStringView name, TableWork& work) {
    while (!work.open.empty() && isOneOf(work.open.back(), {u"p", u"li"}) &&
           !isOneOf(name, {work.open.back()})) {
        work.open.pop_back();
    }
    if (work.open.empty() || !isOneOf(name, {work.open.back()})) {
        work.isTangled = true;
    } else {
        work.open.pop_back();
    }
}

void addCell(QStringView attributes, TableWork& work) {
    int places = 1;
    while (!work.isTooWide) {
        skipSpaces(attributes);
        if (attributes.empty() || attributes.startsWith(QLatin1Char('>'))) {
            break;
        }
        const Word key = takeWord(attributes);
        skipSpaces(attributes);
        Word value{u"1"};
        if (attributes.startsWith(QLatin1Char('='))) {
            attributes = attributes.mid(1);
            skipSpaces(attributes);
            value = takeWord(attributes);
        } else if (key.text.empty() && !attributes.empty()) {
            attributes = attributes.mid(1);  // what no word can start with
        }
        if (isOneOf(key.text, {u"colspan", u"rowspan"})) {
            places *= spanOf(value.text);
        }
        // An attribute may be repeated without end.
        work.isTooWide = !key.isPlain || places == 0 || places > kMostWork;
    }
    work.places += places;
}

// Adds the tag behind a "<".
void addTag(QStringView tag, TableWork& work) {
    skipSpaces(tag);
    const bool closes = tag.startsWith(QLatin1Char('/'));
    if (closes) {
        tag = tag.mid(1);
        skipSpaces(tag);
    }
    const Word name = takeWord(tag);
    work.isTooWide = work.isTooWide || (!name.isPlain && !name.text.empty());
    if (closes) {
        close(name.text, work);
        return;
    }
    open(name.text, work);
    if (isOneOf(name.text, {u"td", u"th"})) {
        addCell(tag, work);
    } else if (isOneOf(name.text, {u"table", u"tr", u"tbody", u"thead", u"tfoot"})) {
        ++work.rows;
        work.tables += isOneOf(name.text, {u"table"}) ? 1 : 0;
    }
}

TableWork workOf(QStringView html) {
    TableWork work;
    for (qsizetype at = html.indexOf(QLatin1Char('<')); at >= 0 && !work.isTooWide;
         at = html.indexOf(QLatin1Char('<'), at + 1)) {
        const QStringView tag = html.mid(at + 1);
        if (tag.startsWith(QLatin1String("!--"))) {
            const qsizetype end = html.indexOf(QLatin1String("-->"), at + 4);
            at = end < 0 ? html.size() : end;
        } else if (!tag.startsWith(QLatin1Char('!'))) {
            addTag(tag, work);
        }
    }
    return work;
}

}  // namespace

BodyForm formOf(std::string_view body, const QString& beginning) {
    const TableWork work = workOf(beginning);
    if (work.isTooWide || cellsIn(body) > kMostCells) {
        return BodyForm::PlainText;
    }
    return work.isTooMuch() ? BodyForm::HtmlWithoutTables : BodyForm::Html;
}

QString withoutTables(QString html) {
    static const QRegularExpression tag(
        QStringLiteral("<(\\s*/?\\s*)(table|thead|tbody|tfoot|caption|tr|td|th)\\b"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    return html.replace(tag, QStringLiteral("<\\1div"));
}

}  // namespace quillet::host
