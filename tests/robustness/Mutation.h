#pragma once

#include "SessionFiles.h"

#include <QString>

#include <random>
#include <vector>

namespace robustness {

/// One way of damaging a file, and whether a reader must notice it.
class Mutation {
public:
    enum class Kind {
        Empty,
        CutMidRecord,
        OneByteShort,
        FlipRandomBit,
        FlipFirstNumber,
        Garbage,
        NotANumber,
        Negative,
        Huge,
        TextForBinary,
        BinaryForText,
        NumbersNotANumber,
        NumbersHuge,
        NumbersNegative,
        DeepNesting,
        HugeText,
        Fifo,
        DanglingLink,
        Folder,
        Sparse,
        Unreadable,
    };

    /// What a command must make of a mutated file.
    struct Verdict {
        /// A message (an error, or a warning) must name the file.
        bool mustNotice = false;
        /// Why, for the corpus listing.
        QString why;
    };

    /// Every mutation, in the order the corpus lists them.
    static const std::vector<Mutation>& all();

    Kind kind() const { return m_kind; }
    /// The name in case names ("cut-mid-record").
    QString name() const;
    /// Whether the mutation makes sense for the file type.
    bool appliesTo(const FileType& type) const;
    /// False when this process cannot make the mutation (an unreadable
    /// file, as root), with the reason.
    bool possible(QString* reason) const;
    /// Damages the file at `path` (which exists). Returns false when the
    /// file offers nothing to damage this way (no numbers in an XML file).
    /// Throws std::runtime_error when the file cannot be changed.
    bool apply(const QString& path, const FileType& type, std::mt19937_64& random) const;
    /// What `dataprep prepare` (`prepare`) or `dataprep inspect` must make of it.
    Verdict verdict(const FileType& type, bool prepare) const;

private:
    explicit Mutation(Kind kind)
        : m_kind(kind)
    {
    }

    Kind m_kind;
};

} // namespace robustness
