#include "ui/stations/stationform.h"

#include "player/streamprobe.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QStringList genreChoices = {
    QStringLiteral("Alternative"), QStringLiteral("Classical"), QStringLiteral("Comedy"),
    QStringLiteral("Country"),     QStringLiteral("Dance"),     QStringLiteral("Funk"),
    QStringLiteral("Jazz"),        QStringLiteral("Metal"),     QStringLiteral("Mixed"),
    QStringLiteral("Pop"),         QStringLiteral("Rap"),       QStringLiteral("RnB"),
    QStringLiteral("Rock"),        QStringLiteral("Talk"),      QStringLiteral("Techno"),
    QStringLiteral("70s"),         QStringLiteral("80s"),       QStringLiteral("World"),
    QStringLiteral("Fun"),         QStringLiteral("Adult"),
};
const QStringList formatChoices = {QStringLiteral("MP3"), QStringLiteral("AAC"), QStringLiteral("OGG"),
                                   QStringLiteral("TV")};

// The format a station's content type stands for; empty when it names none of them.
QString formatOf(const QString &contentType)
{
    if (contentType == u"audio/mpeg" || contentType == u"audio/mp3")
        return QStringLiteral("MP3");
    if (contentType.startsWith(u"audio/aac"))
        return QStringLiteral("AAC");
    if (contentType.contains(u"ogg"))
        return QStringLiteral("OGG");
    if (contentType.startsWith(u"video/"))
        return QStringLiteral("TV");
    return {};
}

QComboBox *editableCombo(const QStringList &choices)
{
    auto *combo = new QComboBox;
    combo->setEditable(true);
    combo->addItems(choices);
    combo->setInsertPolicy(QComboBox::NoInsert);
    return combo;
}

// A caption that gives its control keyboard access and its name for screen readers.
QLabel *buddyLabel(const QString &text, QWidget *buddy)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

template <typename T> T *named(T *widget, const char *name)
{
    widget->setObjectName(QLatin1StringView(name));
    return widget;
}

} // namespace

StationForm::StationForm(Purpose purpose, const Station &station, const QString &separator,
                         const QStringList &categories, QWidget *parent)
    : QDialog(parent), m_station(station), m_separator(separator), m_probe(new StreamProbe(this))
{
    setObjectName(QStringLiteral("StationForm"));
    setModal(true);
    setWindowTitle(purpose == Purpose::Add ? tr("Add a Station") : tr("Edit Station: %1").arg(station.Name));
    build(categories);
    showFields(station);
    // A new station's format is a guess that the station's own answer may correct.
    if (purpose == Purpose::Add)
        m_formatGuess = station.Format;
    connect(m_probe, &StreamProbe::finished, this, &StationForm::showReport);
}

void StationForm::build(const QStringList &categories)
{
    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    txtName = named(new QLineEdit, "txtName");
    txtName->setPlaceholderText(tr("As the list shows it"));
    form->addRow(tr("&Name:"), txtName);

    txtStreamUrl = named(new QLineEdit, "txtStreamUrl");
    txtStreamUrl->setPlaceholderText(tr("http://host:port/path, or a .pls playlist address"));
    cmdTest = named(new QPushButton(tr("&Test")), "cmdTest");
    cmdTest->setAutoDefault(false);
    cmdTest->setToolTip(tr("Test: connect to the stream address and show what the station sends."));
    auto *streamRow = new QHBoxLayout;
    streamRow->addWidget(txtStreamUrl, 1);
    streamRow->addWidget(cmdTest);
    form->addRow(buddyLabel(tr("&Stream address:"), txtStreamUrl), streamRow);

    lblTest = named(new QLabel, "lblTest");
    lblTest->setTextFormat(Qt::PlainText);
    lblTest->setWordWrap(true);
    lblTest->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblTest->hide();
    form->addRow(QString(), lblTest);

    cboGenre = named(editableCombo(genreChoices), "cboGenre");
    form->addRow(tr("&Genre:"), cboGenre);
    // The list's own first entry is the empty one.
    cboCategory = named(editableCombo(categories.mid(categories.value(0).isEmpty() ? 1 : 0)), "cboCategory");
    form->addRow(tr("&Category:"), cboCategory);

    txtBitRate = named(new QLineEdit, "txtBitRate");
    txtBitRate->setPlaceholderText(tr("kbit/s"));
    txtBitRate->setMaximumWidth(80);
    cboFormat = named(editableCombo(formatChoices), "cboFormat");
    auto *rateRow = new QHBoxLayout;
    rateRow->addWidget(txtBitRate);
    rateRow->addSpacing(12);
    rateRow->addWidget(buddyLabel(tr("&Format:"), cboFormat));
    rateRow->addWidget(cboFormat, 1);
    form->addRow(buddyLabel(tr("&Bit rate:"), txtBitRate), rateRow);

    cboRating = named(new QComboBox, "cboRating");
    cboRating->addItems({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4"),
                         QStringLiteral("5")});
    cboRating->setPlaceholderText(tr("not rated"));
    form->addRow(tr("&Rating:"), cboRating);

    txtInfoUrl = named(new QLineEdit, "txtInfoUrl");
    txtInfoUrl->setPlaceholderText(tr("The station's web page (Info opens it)"));
    form->addRow(tr("&Information address:"), txtInfoUrl);

    txtOutputFile = named(new QLineEdit, "txtOutputFile");
    txtOutputFile->setToolTip(tr("Where recordings go: %STATION%, %SONG%, %DATE% and %TIME% are filled in; "
                                 "a leading .\\ means the recordings folder."));
    form->addRow(tr("&Output file:"), txtOutputFile);

    chkSingleSong = named(new QCheckBox(tr("One file per song")), "chkSingleSong");
    // A drop-down would be read as its chosen entry; one that takes typing
    // has a text field of its own.
    const std::pair<QComboBox *, QString> names[] = {{cboGenre, tr("Genre")},
                                                     {cboCategory, tr("Category")},
                                                     {cboFormat, tr("Format")},
                                                     {cboRating, tr("Rating")}};
    for (const auto &[combo, name] : names) {
        combo->setAccessibleName(name);
        if (combo->lineEdit())
            combo->lineEdit()->setAccessibleName(name);
    }
    form->addRow(QString(), chkSingleSong);

    lblProblem = named(new QLabel, "lblProblem");
    lblProblem->setTextFormat(Qt::PlainText);
    lblProblem->setWordWrap(true);
    lblProblem->setAccessibleName(tr("Problem"));
    QPalette warning = lblProblem->palette();
    warning.setColor(QPalette::WindowText, QColor(0xc0, 0x30, 0x30));
    lblProblem->setPalette(warning);
    lblProblem->hide();

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &StationForm::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &StationForm::reject);

    auto *top = new QVBoxLayout(this);
    top->addLayout(form);
    top->addWidget(lblProblem);
    top->addStretch(1);
    top->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 90);

    connect(cmdTest, &QPushButton::clicked, this, &StationForm::cmdTestClick);
}

void StationForm::showFields(const Station &s)
{
    txtName->setText(s.Name);
    txtStreamUrl->setText(s.StreamURL);
    cboGenre->setCurrentText(s.Genre);
    cboCategory->setCurrentText(s.Category);
    txtBitRate->setText(s.BitRate);
    cboFormat->setCurrentText(s.Format);
    cboRating->setCurrentIndex(s.Rating >= 1 && s.Rating <= 5 ? s.Rating - 1 : -1);
    txtInfoUrl->setText(s.InfoUrl);
    txtOutputFile->setText(s.OutputFile);
    chkSingleSong->setChecked(s.SingleSong);
}

Station StationForm::station() const
{
    Station s = m_station;
    s.Name = txtName->text().trimmed();
    s.StreamURL = txtStreamUrl->text().trimmed();
    s.Genre = cboGenre->currentText().trimmed();
    s.Category = cboCategory->currentText().trimmed();
    s.BitRate = txtBitRate->text().trimmed();
    s.Format = cboFormat->currentText().trimmed();
    // An unrated station keeps the rating it had (0, or one the list cannot show).
    if (cboRating->currentIndex() >= 0)
        s.Rating = cboRating->currentIndex() + 1;
    s.InfoUrl = txtInfoUrl->text().trimmed();
    s.OutputFile = txtOutputFile->text();
    s.SingleSong = chkSingleSong->isChecked();
    return s;
}

void StationForm::setTestLimit(int milliseconds)
{
    m_probe->setTimeLimit(milliseconds);
}

QWidget *StationForm::fieldWidget(StationInput::Field field) const
{
    using Field = StationInput::Field;
    switch (field) {
    case Field::None:
        return nullptr;
    case Field::Name:
        return txtName;
    case Field::StreamURL:
        return txtStreamUrl;
    case Field::Genre:
        return cboGenre;
    case Field::Category:
        return cboCategory;
    case Field::BitRate:
        return txtBitRate;
    case Field::Format:
        return cboFormat;
    case Field::InfoUrl:
        return txtInfoUrl;
    case Field::OutputFile:
        return txtOutputFile;
    }
    return nullptr;
}

void StationForm::accept()
{
    const StationInput::Problem problem = StationInput::check(station(), m_separator);
    if (problem.field == StationInput::Field::None) {
        m_probe->cancel();
        QDialog::accept();
        return;
    }
    lblProblem->setText(problem.message);
    lblProblem->show();
    fieldWidget(problem.field)->setFocus();
}

void StationForm::cmdTestClick()
{
    const QString address = txtStreamUrl->text().trimmed();
    if (!StationInput::isStreamAddress(address)) {
        lblTest->setText(tr("Type a stream address that begins with http:// or https:// first."));
        lblTest->show();
        txtStreamUrl->setFocus();
        return;
    }
    lblTest->setText(tr("Connecting to %1...").arg(address));
    lblTest->show();
    cmdTest->setEnabled(false);
    m_probe->start(address);
}

void StationForm::showReport(const ProbeReport &report)
{
    cmdTest->setEnabled(true);
    if (!report.reachable()) {
        lblTest->setText(report.reason());
        return;
    }
    QStringList lines{tr("Reachable: it sends %1.")
                          .arg(report.contentType.isEmpty() ? tr("a stream") : report.contentType)};
    if (!report.bitRate.isEmpty())
        lines << tr("Bit rate: %1 kbit/s").arg(report.bitRate);
    if (!report.name.isEmpty())
        lines << tr("Station name: %1").arg(report.name);
    lines << (report.title.isEmpty() ? tr("No song title yet.") : tr("Now playing: %1").arg(report.title));
    lblTest->setText(lines.join(u'\n'));

    // What the station says of itself fills the fields still empty.
    const auto fillLine = [](QLineEdit *field, const QString &value) {
        if (field->text().trimmed().isEmpty())
            field->setText(value);
    };
    fillLine(txtName, report.name);
    fillLine(txtBitRate, report.bitRate);
    if (StationInput::isWebAddress(report.homePage))
        fillLine(txtInfoUrl, report.homePage);
    if (cboGenre->currentText().trimmed().isEmpty())
        cboGenre->setCurrentText(report.genre);
    const QString format = formatOf(report.contentType);
    const QString shownFormat = cboFormat->currentText().trimmed();
    if (!format.isEmpty() && (shownFormat.isEmpty() || shownFormat == m_formatGuess))
        cboFormat->setCurrentText(format);
}
