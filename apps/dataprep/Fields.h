#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dataprep {

/// An ordered record of named values, the one tree every command's report is
/// built as. Each entry has a JSON key and, when it is meant for people too,
/// a label: JSON output writes every entry by key in the order added;
/// text output writes the labelled entries as aligned "label  value" lines,
/// nested records and lists indented.
class Fields {
public:
    /// A scalar for JSON only.
    Fields& add(const QString& key, const QJsonValue& value);
    /// A scalar shown under `label`, its text made from the value (numbers
    /// with up to 15 digits, yes/no, "-" for null).
    Fields& add(const QString& key, const QString& label, const QJsonValue& value);
    /// A scalar shown as `text` under `label` and written as `value`.
    Fields& add(const QString& key, const QString& label, const QJsonValue& value, const QString& text);
    /// A nested record (JSON only when `label` is empty).
    Fields& add(const QString& key, const QString& label, Fields nested);
    /// A list of records (JSON only when `label` is empty).
    Fields& add(const QString& key, const QString& label, std::vector<Fields> list);
    /// A nested record, or null when there is none.
    Fields& add(const QString& key, const QString& label, std::optional<Fields> nested);

    /// Appends every entry of `other`.
    Fields& append(const Fields& other);

    bool empty() const { return m_entries.empty(); }

    /// Indented JSON, keys in the order added, ending with a newline.
    QByteArray toJson() const;
    /// The labelled entries as text lines, `indent` spaces in.
    void print(std::FILE* stream, int indent = 0) const;

private:
    struct Entry;
    void writeJson(QByteArray& out, int indent) const;
    std::vector<std::shared_ptr<const Entry>> m_entries;
};

/// A number for JSON: null when it is not finite (JSON has no NaN).
QJsonValue number(double value);
/// A number, or null when absent or not finite.
QJsonValue number(const std::optional<double>& value);
/// A text from the library.
QJsonValue text(const std::string& value);
/// A text, or null when empty.
QJsonValue textOrNull(const std::string& value);

} // namespace dataprep
