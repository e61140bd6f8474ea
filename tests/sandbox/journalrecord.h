#pragma once

// Inside the sandbox: the plug-in's record in the journal, read back as an administrator reads it.
#include "sandboxrun.h"

using JournalEntry = QJsonObject;

// The entries of journalctl -o json, an object a line. A value that is not printable text (the
// tool's colours, say) comes as an array of its bytes; it is read back as text.
inline QList<JournalEntry> journalEntries(const QByteArray &record)
{
    QList<JournalEntry> entries;
    for (const QByteArray &line : record.split('\n')) {
        if (line.isEmpty())
            continue;
        JournalEntry entry = QJsonDocument::fromJson(line).object();
        for (auto field = entry.begin(); field != entry.end(); ++field) {
            if (!field->isArray())
                continue;
            QByteArray bytes;
            for (const QJsonValue &byte : field->toArray())
                bytes += char(byte.toInt());
            *field = QString::fromUtf8(bytes);
        }
        entries << entry;
    }
    return entries;
}

// Inside the sandbox: the plug-in's entries in the journal, read back as an administrator reads
// them, after the one at `cursor` (all for none), and as `matches` choose. journalctl skips the
// first entry after a cursor that the matches leave out, so the two do not go together.
inline QByteArray journalRecord(const QByteArray &cursor = {}, const QStringList &matches = {})
{
    QStringList arguments =
        QStringList{"-q", "--no-pager", "-o", "json", "--all", "-t", "pyx-orn-server-plugin"} +
        matches;
    if (!cursor.isEmpty())
        arguments << "--after-cursor=" + QString::fromUtf8(cursor);
    return runProgram("/usr/bin/journalctl", arguments).out;
}

// Inside the sandbox: where the plug-in's entries in the journal end now, for journalRecord().
inline QByteArray journalCursor()
{
    const QByteArray last = journalRecord({}, {"-n", "1"});
    return journalEntries(last).value(0)["__CURSOR"].toString().toUtf8();
}

// What the entries of one run say, an entry a word: PYX_STEP, then PYX_RESULT, PYX_OUTCOME,
// PYX_EXIT_CODE, PYX_START_ERROR and PYX_HOSTS_REPLACED where present, joined by ':'; output
// entries in a row make one word "output". Every entry must come from the program and carry the
// run's identifier.
inline QString journalSummary(const QList<JournalEntry> &entries)
{
    QStringList words;
    for (const JournalEntry &entry : entries) {
        if (entry["SYSLOG_IDENTIFIER"] != "pyx-orn-server-plugin" ||
            entry["PYX_RUN_ID"] != entries.first()["PYX_RUN_ID"] ||
            entry["PYX_RUN_ID"].toString().size() != 32)
            return "an entry of another program or run: " + entry["MESSAGE"].toString();
        QStringList word{entry["PYX_STEP"].toString()};
        for (const char *name : {"PYX_RESULT", "PYX_OUTCOME", "PYX_EXIT_CODE", "PYX_START_ERROR",
                                 "PYX_HOSTS_REPLACED"})
            if (entry.contains(name))
                word << entry[name].toString();
        if (word.join(':') != "output" || words.value(words.size() - 1) != "output")
            words << word.join(':');
    }
    return words.join(' ');
}
