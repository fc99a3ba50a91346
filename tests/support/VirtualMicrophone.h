// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QtCore/QProcess>
#include <QtCore/QString>

// The sound server of the virtual desktop: what is played into the sink "virtual_speaker" is heard by the
// default source "virtual_mic". All of it throws std::runtime_error with the server's words when something is
// refused.
namespace lorvane {

// A sound on its way into the microphone; it breaks off when this object goes.
class Playback {
 public:
    Playback(const QString& file, const QString& sink);
    ~Playback();
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    // Runs the event loop until the last sample has been played and 0.3 s of silence after it.
    void wait();

 private:
    QProcess process_;
};

// Recorded human speech on this machine, with what is said in it.
struct SpeechSample {
    QString file;
    QString words;
    double seconds;
};

// A microphone that a test plugs in; unplugged when this object goes.
class PluggedMicrophone {
 public:
    // The name that the server knows it by, and the one that people read.
    explicit PluggedMicrophone(const QString& name, const QString& description);
    ~PluggedMicrophone();
    PluggedMicrophone(const PluggedMicrophone&) = delete;
    PluggedMicrophone& operator=(const PluggedMicrophone&) = delete;

    // The sink to play into so that this microphone hears it.
    QString sink() const;
    void makeDefault() const;

 private:
    QString name_;
    QString sinkModule_;
    QString sourceModule_;
};

namespace sound {
SpeechSample shortSentence();
SpeechSample longSentence();
QString defaultSource();
void setDefaultSource(const QString& name);
// Ends the server, as a crash or a logout does, and returns when it is gone.
void stopServer();
// Starts it again with its first settings, and returns when it answers.
void startServer();
} // namespace sound

} // namespace lorvane
