// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/StateFile.h"

#include <QString>

namespace lorvane {

/// A state file on the disk, for its owner alone (mode 0600, its folder 0700). The new content is written to
/// a second file in the same folder, brought to the disk and renamed, and the folder is brought to the disk
/// too. The second file has one name for ever, so that a program that was killed leaves at most one; a lock
/// on it keeps two programs from writing the same. A link at the path to a file stays,
/// and the file that it names is replaced.
class DiskStateFile final : public StateFile {
 public:
    /// Makes the folder where it can.
    explicit DiskStateFile(const QString& path);

    [[nodiscard]] Content read() override;
    [[nodiscard]] bool replace(const QByteArray& bytes, Predecessor predecessor) override;

 private:
    [[nodiscard]] QByteArray target() const;

    QString path_;
};

} // namespace lorvane
