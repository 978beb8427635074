#include "Fields.h"

#include <QJsonArray>

#include <algorithm>
#include <cstdio>

namespace dataprep {

struct Fields::Entry {
    QString name;
    QJsonValue json;
    QString text;
    std::unique_ptr<Fields> nested;
    std::vector<Fields> list;
    bool isList = false;
};

namespace {

QString plainText(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        return QStringLiteral("-");
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 15);
    case QJsonValue::String:
        return value.toString();
    default:
        return QString();
    }
}

} // namespace

Fields& Fields::add(const QString& name, const QJsonValue& value)
{
    return add(name, value, plainText(value));
}

Fields& Fields::add(const QString& name, const QJsonValue& json, const QString& text)
{
    auto entry = std::make_shared<Entry>();
    entry->name = name;
    entry->json = json;
    entry->text = text;
    m_entries.push_back(std::move(entry));
    return *this;
}

Fields& Fields::add(const QString& name, Fields nested)
{
    auto entry = std::make_shared<Entry>();
    entry->name = name;
    entry->nested = std::make_unique<Fields>(std::move(nested));
    m_entries.push_back(std::move(entry));
    return *this;
}

Fields& Fields::add(const QString& name, std::vector<Fields> list)
{
    auto entry = std::make_shared<Entry>();
    entry->name = name;
    entry->list = std::move(list);
    entry->isList = true;
    m_entries.push_back(std::move(entry));
    return *this;
}

QJsonObject Fields::toJson() const
{
    QJsonObject object;
    for (const auto& entry : m_entries) {
        if (entry->nested) {
            object.insert(entry->name, entry->nested->toJson());
        } else if (entry->isList) {
            QJsonArray array;
            for (const Fields& item : entry->list)
                array.append(item.toJson());
            object.insert(entry->name, array);
        } else {
            object.insert(entry->name, entry->json);
        }
    }
    return object;
}

void Fields::print(int indent) const
{
    int width = 0;
    for (const auto& entry : m_entries)
        width = std::max(width, int(entry->name.size()));
    const QByteArray pad(indent, ' ');
    for (const auto& entry : m_entries) {
        const QByteArray name = entry->name.toUtf8();
        if (entry->nested) {
            std::printf("%s%s\n", pad.constData(), name.constData());
            entry->nested->print(indent + 2);
        } else if (entry->isList) {
            std::printf("%s%s (%zu)\n", pad.constData(), name.constData(), entry->list.size());
            for (std::size_t i = 0; i < entry->list.size(); ++i) {
                std::printf("%s  [%zu]\n", pad.constData(), i);
                entry->list[i].print(indent + 4);
            }
        } else {
            std::printf("%s%-*s  %s\n", pad.constData(), width, name.constData(), entry->text.toUtf8().constData());
        }
    }
}

} // namespace dataprep
