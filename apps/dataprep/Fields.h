#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace dataprep {

/// An ordered record of named values for `inspect`: printed as aligned
/// "name  value" lines (nested records and lists indented) or as JSON.
class Fields {
public:
    Fields& add(const QString& name, const QJsonValue& value);
    Fields& add(const QString& name, const std::string& value) { return add(name, QString::fromStdString(value)); }
    Fields& add(const QString& name, const char* value) { return add(name, QString::fromUtf8(value)); }
    /// A value shown as `text` and written to JSON as `json`.
    Fields& add(const QString& name, const QJsonValue& json, const QString& text);
    Fields& add(const QString& name, Fields nested);
    Fields& add(const QString& name, std::vector<Fields> list);

    QJsonObject toJson() const;
    void print(int indent = 0) const;

private:
    struct Entry;
    std::vector<std::shared_ptr<Entry>> m_entries;
};

} // namespace dataprep
