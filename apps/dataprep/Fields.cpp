#include "Fields.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace dataprep {

struct Fields::Entry {
    QString key;
    QString label;
    QJsonValue value;
    QString text;
    enum class Kind { Scalar, Record, List } kind = Kind::Scalar;
    Fields nested;
    std::vector<Fields> list;
};

namespace {

QString plainText(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 15);
    case QJsonValue::String:
        return value.toString();
    default:
        return QStringLiteral("-");
    }
}

// A scalar as Qt writes it inside a JSON document (escaped string, shortest
// number that reads back the same, null for what JSON cannot hold).
QByteArray scalarJson(const QJsonValue& value)
{
    if (value.isArray()) {
        // Lists of scalars (names) stay on one line.
        QByteArray out = "[";
        const QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size(); ++i)
            out += (i > 0 ? ", " : "") + scalarJson(array[i]);
        return out + ']';
    }
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

void newline(QByteArray& out, int indent)
{
    out += '\n';
    out += QByteArray(indent, ' ');
}

} // namespace

QJsonValue number(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue();
}

QJsonValue number(const std::optional<double>& value)
{
    return value ? number(*value) : QJsonValue();
}

QJsonValue text(const std::string& value)
{
    return QString::fromStdString(value);
}

QJsonValue textOrNull(const std::string& value)
{
    return value.empty() ? QJsonValue() : text(value);
}

Fields& Fields::add(const QString& key, const QJsonValue& value)
{
    return add(key, QString(), value, QString());
}

Fields& Fields::add(const QString& key, const QString& label, const QJsonValue& value)
{
    return add(key, label, value, plainText(value));
}

Fields& Fields::add(const QString& key, const QString& label, const QJsonValue& value, const QString& text)
{
    auto entry = std::make_shared<Entry>();
    entry->key = key;
    entry->label = label;
    entry->value = value;
    entry->text = text;
    m_entries.push_back(std::move(entry));
    return *this;
}

Fields& Fields::add(const QString& key, const QString& label, Fields nested)
{
    auto entry = std::make_shared<Entry>();
    entry->key = key;
    entry->label = label;
    entry->kind = Entry::Kind::Record;
    entry->nested = std::move(nested);
    m_entries.push_back(std::move(entry));
    return *this;
}

Fields& Fields::add(const QString& key, const QString& label, std::vector<Fields> list)
{
    auto entry = std::make_shared<Entry>();
    entry->key = key;
    entry->label = label;
    entry->kind = Entry::Kind::List;
    entry->list = std::move(list);
    m_entries.push_back(std::move(entry));
    return *this;
}

Fields& Fields::add(const QString& key, const QString& label, std::optional<Fields> nested)
{
    if (nested)
        return add(key, label, std::move(*nested));
    return add(key, label, QJsonValue());
}

Fields& Fields::append(const Fields& other)
{
    m_entries.insert(m_entries.end(), other.m_entries.begin(), other.m_entries.end());
    return *this;
}

QByteArray Fields::toJson() const
{
    QByteArray out;
    writeJson(out, 0);
    out += '\n';
    return out;
}

void Fields::writeJson(QByteArray& out, int indent) const
{
    if (m_entries.empty()) {
        out += "{}";
        return;
    }
    out += '{';
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = *m_entries[i];
        newline(out, indent + 4);
        out += scalarJson(entry.key);
        out += ": ";
        switch (entry.kind) {
        case Entry::Kind::Scalar:
            out += scalarJson(entry.value);
            break;
        case Entry::Kind::Record:
            entry.nested.writeJson(out, indent + 4);
            break;
        case Entry::Kind::List:
            if (entry.list.empty()) {
                out += "[]";
                break;
            }
            out += '[';
            for (std::size_t j = 0; j < entry.list.size(); ++j) {
                newline(out, indent + 8);
                entry.list[j].writeJson(out, indent + 8);
                if (j + 1 < entry.list.size())
                    out += ',';
            }
            newline(out, indent + 4);
            out += ']';
            break;
        }
        if (i + 1 < m_entries.size())
            out += ',';
    }
    newline(out, indent);
    out += '}';
}

void Fields::print(std::FILE* stream, int indent) const
{
    int width = 0;
    for (const auto& entry : m_entries)
        if (entry->kind == Entry::Kind::Scalar)
            width = std::max(width, int(entry->label.size()));
    const QByteArray pad(indent, ' ');
    for (const auto& entry : m_entries) {
        if (entry->label.isEmpty())
            continue;
        const QByteArray label = entry->label.toUtf8();
        switch (entry->kind) {
        case Entry::Kind::Scalar:
            std::fprintf(stream, "%s%-*s  %s\n", pad.constData(), width, label.constData(),
                         entry->text.toUtf8().constData());
            break;
        case Entry::Kind::Record:
            std::fprintf(stream, "%s%s\n", pad.constData(), label.constData());
            entry->nested.print(stream, indent + 2);
            break;
        case Entry::Kind::List:
            std::fprintf(stream, "%s%s (%zu)\n", pad.constData(), label.constData(), entry->list.size());
            for (std::size_t i = 0; i < entry->list.size(); ++i) {
                std::fprintf(stream, "%s  %zu.\n", pad.constData(), i + 1);
                entry->list[i].print(stream, indent + 4);
            }
            break;
        }
    }
}

} // namespace dataprep
