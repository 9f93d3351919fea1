#include "windows/qt/Windows.h"

#include "forms/KavConfig.h"
#include "forms/KavMain.h"
#include "forms/KavMessages.h"
#include "forms/UserCommandSequenceDefinition.h"
#include "windows/qt/NetworkViews.h"
#include "windows/qt/StationViews.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTabBar>

namespace tv {

namespace {

void symbol(Control& c, QWidget* w, const QString& text) {
    w->setProperty("tvEmptyText", text);
    if (c.viewChanged) c.viewChanged();
}

}  // namespace

Windows::Windows(KavMain& main, KavConfig& config, KavMessages& messages, UserCommandSequenceDefinition& editor) {
    windows_.push_back(buildMain(main));
    windows_.push_back(buildConfig(config));
    windows_.push_back(buildMessages(messages));
    windows_.push_back(buildSmall(messages.note, {&messages.note.NoteLabel, &messages.note.NoteText, &messages.note.PermLabel}));
    windows_.push_back(buildSmall(messages.overflow, {&messages.overflow.Message, &messages.overflow.OKCmd}));
    windows_.push_back(buildSmall(messages.reject, {&messages.reject.Label1, &messages.reject.Command,
                                                    &messages.reject.Label2, &messages.reject.Time}));
    windows_.push_back(buildEditor(editor));
}

Windows::~Windows() {
    for (FormWindow* w : windows_) {
        w->form().viewChanged = nullptr;
        w->form().raiseRequested = nullptr;
        for (Control* c : w->form().controls()) c->viewChanged = nullptr;
        delete w;
    }
}

FormWindow* Windows::window(const QString& formName) const {
    for (FormWindow* w : windows_)
        if (w->form().name() == formName) return w;
    return nullptr;
}

FormWindow* Windows::buildMain(KavMain& m) {
    auto* win = new FormWindow(m, binder_);
    auto W = [win](Control& c) { return win->w(c); };
    auto* root = new QVBoxLayout(win);
    root->setSizeConstraint(QLayout::SetFixedSize);  // a fixed-size window, as designed

    // The frequency, large.
    auto* freq = qobject_cast<QLineEdit*>(W(m.FreqDisplay));
    QFont big(QStringLiteral("Sans"), 34, QFont::Bold);
    freq->setFont(big);
    freq->setAlignment(Qt::AlignRight);
    freq->setMinimumWidth(380);
    freq->setStyleSheet(QStringLiteral("QLineEdit { background: #10202a; color: #7CFC9A; border-radius: 6px; padding: 4px 10px; }"));
    auto* top = new QHBoxLayout;
    top->addWidget(freq, 1);
    auto* khz = new QLabel(QStringLiteral("kHz"), win);
    khz->setFont(QFont(QStringLiteral("Sans"), 14));
    top->addWidget(khz);
    root->addLayout(top);

    auto* middle = new QHBoxLayout;
    // Modes in two columns.
    QWidget* modeFrame = W(m.ModeFrame);
    auto* modes = layoutOf<QGridLayout>(modeFrame);
    for (int i = 0; i <= 9; ++i) modes->addWidget(W(m.ModeSel[i]), i % 5, i / 5);
    middle->addWidget(modeFrame);

    // VFOs, meter and bandspread.
    QWidget* vfoFrame = W(m.VFOFrame);
    auto* vfo = layoutOf<QVBoxLayout>(vfoFrame);
    auto* vfoButtons = new QGridLayout;
    int col = 0;
    for (Control* b : std::initializer_list<Control*>{&m.VFOASelCmd, &m.VFOBSelCmd, &m.VFOEqualCmd, &m.VFOXchCmd, &m.XFCCmd})
        vfoButtons->addWidget(W(*b), 0, col++);
    col = 0;
    for (Control* b : std::initializer_list<Control*>{&m.MainSelCmd, &m.SubSelCmd, &m.MainSubEqualCmd, &m.MainSubXchCmd})
        vfoButtons->addWidget(W(*b), 1, col++);
    vfo->addLayout(vfoButtons);
    auto* meter = new QHBoxLayout;
    QWidget* smeter = W(m.SMeter);
    smeter->setMinimumSize(260, 26);
    QWidget* dummy = W(m.SMeterDummy);
    dummy->setMinimumSize(260, 26);
    meter->addWidget(smeter, 1);
    meter->addWidget(dummy, 1);
    meter->addWidget(W(m.SMeterValue));
    vfo->addLayout(meter);
    QWidget* background = W(m.BandSpreadBackground);
    background->setMinimumHeight(14);
    vfo->addWidget(background);
    // The scroll bar below is the slider the operator drags.
    W(m.BandspreadSlider)->setProperty("tvUnplaced", true);
    W(m.BandspreadSlider)->setVisible(false);
    auto* spread = new QHBoxLayout;
    spread->addWidget(W(m.BandLo));
    QWidget* down = W(m.BandspreadDownCmd);
    symbol(m.BandspreadDownCmd, down, QStringLiteral("\u2039"));
    down->setMaximumWidth(28);
    spread->addWidget(down);
    spread->addWidget(W(m.Bandspread), 1);
    QWidget* up = W(m.BandspreadUpCmd);
    symbol(m.BandspreadUpCmd, up, QStringLiteral("\u203A"));
    up->setMaximumWidth(28);
    spread->addWidget(up);
    spread->addWidget(W(m.BandHi));
    vfo->addLayout(spread);
    middle->addWidget(vfoFrame, 1);

    // Band and fine tuning, and the switches.
    auto* right = new QVBoxLayout;
    auto* tune = new QGridLayout;
    QWidget* bu = W(m.BandUpCmd);
    symbol(m.BandUpCmd, bu, QStringLiteral("Band \u25B2"));
    QWidget* bd = W(m.BandDownCmd);
    symbol(m.BandDownCmd, bd, QStringLiteral("Band \u25BC"));
    QWidget* hu = W(m.HzUpCmd);
    symbol(m.HzUpCmd, hu, QStringLiteral("+10 Hz"));
    QWidget* hd = W(m.HzDownCmd);
    symbol(m.HzDownCmd, hd, QStringLiteral("\u221210 Hz"));
    tune->addWidget(bu, 0, 0);
    tune->addWidget(hu, 0, 1);
    tune->addWidget(bd, 1, 0);
    tune->addWidget(hd, 1, 1);
    right->addLayout(tune);
    for (Control* c : std::initializer_list<Control*>{&m.HamBandSequence, &m.SplitBox, &m.DualBox}) right->addWidget(W(*c));
    auto* xcvr = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) xcvr->addWidget(W(m.XcvrSelButton[i]));
    right->addLayout(xcvr);
    right->addStretch(1);
    middle->addLayout(right);
    root->addLayout(middle);

    // The shared area: filters, devices and PTT, or the memory bank.
    auto* shared = new QHBoxLayout;
    QWidget* filters = W(m.FilterFrame);
    auto* fl = layoutOf<QGridLayout>(filters);
    const std::pair<Control*, Control*> lists[] = {
        {&m.FilterGroupLabel, &m.FilterGroupCombo}, {&m.MainFilter1Label, &m.MainFilter1Combo},
        {&m.MainFilter2Label, &m.MainFilter2Combo}, {&m.SubFilterLabel, &m.SubFilterCombo},
        {&m.LowCutLabel, &m.LowCutoffCombo},        {&m.HighCutLabel, &m.HighCutoffCombo},
        {&m.ShiftLabel, &m.ShiftCombo},             {&m.WidthLabel, &m.WidthCombo}};
    int row = 0;
    for (const auto& [label, list] : lists) {
        fl->addWidget(W(*label), row / 2, (row % 2) * 2);
        fl->addWidget(W(*list), row / 2, (row % 2) * 2 + 1);
        ++row;
    }
    shared->addWidget(filters, 1);
    buildDeviceFrames(m, [win](Control& ctl, QWidget* parent) {
        QWidget* w = win->w(ctl);
        if (parent) w->setParent(parent);
        return w;
    });
    for (int i = 0; i < 3; ++i) shared->addWidget(W(m.DeviceFrame[i]));
    QWidget* ptt = W(m.PTTFrame);
    ptt->setMaximumWidth(180);
    auto* pl = layoutOf<QVBoxLayout>(ptt);
    pl->addWidget(W(m.PTTonCmd));
    pl->addWidget(W(m.PTTOffCmd));
    shared->addWidget(ptt);
    shared->addWidget(layoutMemoryBank(m, win), 1);
    shared->addStretch(0);
    root->addLayout(shared);
    QWidget* seqFrame = W(m.UserCommandFrame);
    auto* sl = layoutOf<QGridLayout>(seqFrame);
    sl->addWidget(W(m.Label9), 0, 0);
    sl->addWidget(W(m.AltCheckBox), 1, 0);
    for (int i = 0; i < 8; ++i) {
        sl->addWidget(W(m.UserSequence[i]), 0, i + 1);
        QWidget* key = W(m.RawCmdLabel[i]);
        qobject_cast<QLabel*>(key)->setAlignment(Qt::AlignCenter);
        sl->addWidget(key, 1, i + 1);
    }
    root->addWidget(seqFrame);

    auto* buttons = new QHBoxLayout;
    for (Control* c : std::initializer_list<Control*>{&m.MBCmd, &m.FDCmd}) buttons->addWidget(W(*c));
    buttons->addStretch(1);
    buttons->addWidget(W(m.NetServerLabel));
    buttons->addWidget(W(m.NetServerUnlockCmd));
    for (Control* c : std::initializer_list<Control*>{&m.MessagesCmd, &m.ConfigCmd, &m.ControlHelpCmd}) buttons->addWidget(W(*c));
    root->addLayout(buttons);
    W(m.OriginalFormHeight)->setVisible(false);

    // Whatever the layout has no place for still gets a widget, hidden, so nothing of the model is lost.
    for (Control* c : m.controls())
        if (!binder_.widgetOf(*c) && !dynamic_cast<Timer*>(c)) {
            W(*c)->setProperty("tvUnplaced", true);
            W(*c)->setVisible(false);
        }

    // The designed size is what the layout needs.
    const QSize hint = win->sizeHint();
    m.setWidth(hint.width());
    m.setHeight(hint.height());
    return win;
}

FormWindow* Windows::buildConfig(KavConfig& c) {
    auto* win = new FormWindow(c, binder_);
    auto W = [win](Control& ctl) { return win->w(ctl); };
    auto* root = new QVBoxLayout(win);
    root->addWidget(W(c.ConfigTab));
    auto* pages = new QStackedWidget(win);
    root->addWidget(pages, 1);
    std::vector<QWidget*> page(size_t(c.ConfigTab.count()));
    for (auto& p : page) {
        p = new QWidget(pages);
        pages->addWidget(p);
    }
    auto* tabBar = qobject_cast<QTabBar*>(W(c.ConfigTab));
    QObject::connect(tabBar, &QTabBar::currentChanged, pages, &QStackedWidget::setCurrentIndex);
    // A tab chosen by the program turns the page too.
    auto tabView = c.ConfigTab.viewChanged;
    c.ConfigTab.viewChanged = [tabView, pages, &c] {
        if (tabView) tabView();
        pages->setCurrentIndex(c.ConfigTab.tab());
    };
    pages->setCurrentIndex(c.ConfigTab.tab());

    // General.
    auto* g = new QGridLayout(page[0]);
    QWidget* radio = W(c.RadioFrame);
    radio->setParent(page[0]);
    auto* rl = layoutOf<QGridLayout>(radio);
    auto place = [&](Control& ctl, QWidget* parent) {
        QWidget* w = W(ctl);
        w->setParent(parent);
        return w;
    };
    rl->addWidget(place(c.ModelLabel, radio), 0, 0);
    rl->addWidget(place(c.RadioCombo, radio), 0, 1, 1, 3);
    rl->addWidget(place(c.AddressLabel, radio), 1, 0);
    rl->addWidget(place(c.Address, radio), 1, 1);
    rl->addWidget(place(c.HexLabel, radio), 1, 2);
    rl->addWidget(place(c.DecLabel, radio), 1, 2);
    rl->addWidget(place(c.DefaultAddress, radio), 1, 3);
    rl->addWidget(place(c.Interrogation, radio), 2, 0, 1, 4);
    rl->addWidget(place(c.PollLabel1, radio), 3, 0);
    rl->addWidget(place(c.PollInterval, radio), 3, 1);
    rl->addWidget(place(c.PollLabel2, radio), 3, 2);
    rl->addWidget(place(c.RadioFolderLabel, radio), 4, 0);
    rl->addWidget(place(c.RadioFolder, radio), 4, 1, 1, 2);
    rl->addWidget(place(c.RadioFolderSelect, radio), 4, 3);
    g->addWidget(radio, 0, 0, 2, 1);
    auto frameWith = [&](Frame& f, std::initializer_list<Control*> inside, QWidget* parent) {
        QWidget* fw = place(f, parent);
        auto* l = layoutOf<QVBoxLayout>(fw);
        for (Control* ctl : inside) l->addWidget(place(*ctl, fw));
        return fw;
    };
    g->addWidget(frameWith(c.RadixFrame, {&c.HexSel, &c.DecSel}, page[0]), 0, 1);
    g->addWidget(frameWith(c.PTTFrame, {&c.PTTonCmd, &c.PTTOffCmd, &c.TxTimeoutLabel, &c.TxTimeout}, page[0]), 1, 1);
    g->addWidget(frameWith(c.Frame1, {&c.TooltipsCheckbox, &c.BrowserPathnameLabel, &c.BrowserPathname,
                                      &c.BrowserSelectCmd, &c.ConfigGenHelpCmd},
                           page[0]),
                 2, 0);
    QWidget* ar = place(c.AutorepeatFrame, page[0]);
    auto* al = layoutOf<QHBoxLayout>(ar);
    al->addWidget(place(c.AutoRepeatFastLabel, ar));
    al->addWidget(place(c.AutoRepeatScroll, ar), 1);
    al->addWidget(place(c.AutoRepeatSlowLabel, ar));
    g->addWidget(ar, 2, 1);
    g->addWidget(frameWith(c.Frame4, {&c.UserCommandsEnableBox}, page[0]), 3, 0);
    g->addWidget(frameWith(c.Frame5, {&c.DualReceiveEnableBox}, page[0]), 3, 1);
    g->addWidget(frameWith(c.Frame6, {&c.InitialXcvrCommand}, page[0]), 4, 0);
    auto* checks = new QVBoxLayout;
    checks->addWidget(place(c.DebugCheck, page[0]));
    checks->addWidget(place(c.DualMonitorCheck, page[0]));
    g->addLayout(checks, 4, 1);

    // Com.
    auto* com = new QGridLayout(page[1]);
    auto options = [&](Frame& f, auto& array, QWidget* parent) {
        QWidget* fw = place(f, parent);
        auto* l = layoutOf<QVBoxLayout>(fw);
        for (int i = array.lbound(); i <= array.ubound(); ++i) l->addWidget(place(array[i], fw));
        l->addStretch(1);
        return fw;
    };
    {
        // Each port number with the device it stands for beside it.
        QWidget* fw = place(c.PortFrame, page[1]);
        auto* l = layoutOf<QVBoxLayout>(fw);
        auto* rows = new QGridLayout;
        for (int i = c.CommPort.lbound(); i <= c.CommPort.ubound(); ++i) {
            rows->addWidget(place(c.CommPort[i], fw), i, 0);
            QWidget* device = place(c.CommPortDevice[i], fw);
            device->setMinimumWidth(260);
            rows->addWidget(device, i, 1);
        }
        l->addLayout(rows);
        l->addStretch(1);
        com->addWidget(fw, 0, 0);
    }
    com->addWidget(options(c.SpeedFrame, c.Speed, page[1]), 0, 1);
    com->addWidget(options(c.ParityFrame, c.Parity, page[1]), 0, 2);
    com->addWidget(options(c.WordLengthFrame, c.WordLength, page[1]), 0, 3);
    com->addWidget(options(c.StopBitsFrame, c.StopBits, page[1]), 0, 4);
    com->addWidget(options(c.DTRFrame, c.DTRButton, page[1]), 1, 0, 1, 2);
    com->addWidget(options(c.RTSFrame, c.RTSButton, page[1]), 1, 2, 1, 2);
    com->addWidget(place(c.ConfigComHelpCmd, page[1]), 1, 4, Qt::AlignBottom);

    // The devices and the transceivers.
    const PlaceWidget placeIn = [&](Control& ctl, QWidget* parent) { return place(ctl, parent); };
    for (int i = 0; i < 3; ++i) buildDevicePage(c, i, page[size_t(2 + i)], placeIn);
    buildMultiRadioPage(c, page[7], placeIn);
    // Filter groups: the grid of groups above, their file and the restore switch below.
    {
        auto* fg = new QVBoxLayout(page[5]);
        QWidget* frame = place(c.YaesuFilterGroupFrame, page[5]);
        layoutOf<QVBoxLayout>(frame)->addWidget(place(c.YaesuFilterGroupGrid, frame), 1);
        fg->addWidget(frame, 1);
        auto* bottom = new QHBoxLayout;
        QWidget* file = place(c.GroupFileFrame, page[5]);
        auto* fl = layoutOf<QGridLayout>(file);
        fl->addWidget(place(c.GroupFilename, file), 0, 0, 1, 3);
        fl->addWidget(place(c.SelectGroupFilenameCmd, file), 1, 0);
        fl->addWidget(place(c.LoadGroupCmd, file), 1, 1);
        fl->addWidget(place(c.SaveGroupCmd, file), 1, 2);
        bottom->addWidget(file, 1);
        auto* side = new QVBoxLayout;
        side->addWidget(place(c.ModeFiltersEnabledCheck, page[5]));
        side->addStretch(1);
        side->addWidget(place(c.ConfigGroupHelpCmd, page[5]), 0, Qt::AlignRight);
        bottom->addLayout(side);
        fg->addLayout(bottom);
        fg->addStretch(0);
    }
    layoutMemoriesTab(c, win, page[6]);
    // Loggers: the web logger above, the contest loggers' UDP below.
    if (const int t = c.tabIndex(QStringLiteral("Loggers")); t >= 0) {
        QWidget* p = page[size_t(t)];
        auto* lg = new QVBoxLayout(p);
        QWidget* web = place(c.WebLoggerFrame, p);
        auto* wl = layoutOf<QGridLayout>(web);
        wl->addWidget(place(c.WebLoggerEnabled, web), 0, 0, 1, 2);
        wl->addWidget(place(c.WebLoggerUrlLabel, web), 1, 0);
        wl->addWidget(place(c.WebLoggerUrl, web), 1, 1);
        wl->addWidget(place(c.WebLoggerKeyLabel, web), 2, 0);
        wl->addWidget(place(c.WebLoggerKey, web), 2, 1);
        wl->addWidget(place(c.WebLoggerRadioLabel, web), 3, 0);
        wl->addWidget(place(c.WebLoggerRadio, web), 3, 1);
        wl->setColumnStretch(1, 1);
        lg->addWidget(web);
        QWidget* udp = place(c.ContestUdpFrame, p);
        auto* ul = layoutOf<QGridLayout>(udp);
        ul->addWidget(place(c.UdpRadioInfoEnabled, udp), 0, 0, 1, 2);
        ul->addWidget(place(c.UdpDestinationsLabel, udp), 1, 0);
        ul->addWidget(place(c.UdpDestinations, udp), 1, 1);
        ul->addWidget(place(c.UdpCommandsEnabled, udp), 2, 0, 1, 2);
        ul->addWidget(place(c.UdpCommandsPortLabel, udp), 3, 0);
        QWidget* port = place(c.UdpCommandsPort, udp);
        port->setMaximumWidth(90);
        ul->addWidget(port, 3, 1, Qt::AlignLeft);
        ul->setColumnStretch(1, 1);
        lg->addWidget(udp);
        lg->addStretch(1);
    }
    buildNetworkPage(c, page[size_t(c.networkTab())], placeIn);
    for (Control* ctl : c.controls())
        if (!binder_.widgetOf(*ctl) && !dynamic_cast<Timer*>(ctl)) {
            W(*ctl)->setProperty("tvUnplaced", true);
            W(*ctl)->setVisible(false);
        }
    // The keyboard: in this window buttons, options and lists take the focus too (the main window's
    // give it back to the frequency box), and Tab goes through each page in the order of its controls, top to bottom.
    QWidget* previous = W(c.ConfigTab);
    for (int t = 0; t < c.ConfigTab.count(); ++t)
        for (Control* ctl : c.controls()) {
            if (c.tabOf(*ctl) != t) continue;
            QWidget* w = binder_.widgetOf(*ctl);
            if (!w || w->property("tvUnplaced").toBool()) continue;
            if (qobject_cast<QPushButton*>(w) || qobject_cast<QRadioButton*>(w) || qobject_cast<QComboBox*>(w))
                w->setFocusPolicy(Qt::StrongFocus);
            if (w->focusPolicy() == Qt::NoFocus) continue;
            QWidget::setTabOrder(previous, w);
            previous = w;
        }
    const QSize hint = win->sizeHint();
    c.setWidth(std::max(c.width(), hint.width()));
    c.setHeight(std::max(c.height(), hint.height()));
    return win;
}

FormWindow* Windows::buildMessages(KavMessages& m) {
    auto* win = new FormWindow(m, binder_);
    auto W = [win](Control& ctl) { return win->w(ctl); };
    auto* root = new QVBoxLayout(win);
    auto* top = new QHBoxLayout;
    auto frameWith = [&](Frame& f, std::initializer_list<Control*> inside) {
        QWidget* fw = W(f);
        auto* l = layoutOf<QHBoxLayout>(fw);
        for (Control* ctl : inside) l->addWidget(W(*ctl));
        return fw;
    };
    top->addWidget(frameWith(m.MessageDisplayFrame, {&m.MessageDisplayMode[0], &m.MessageDisplayMode[1], &m.MessageDisplayMode[2]}));
    top->addWidget(frameWith(m.CapturedMessagesFrame, {&m.CaptureEnabled, &m.NoteCmd, &m.ClrCmd, &m.SaveCmd}));
    top->addWidget(frameWith(m.InterrogateFrame, {&m.ReqModeCmd, &m.ReqFreqCmd}));
    top->addWidget(W(m.MessageHelpCmd));
    root->addLayout(top);
    const QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    QWidget* header = W(m.ColumnHeader);
    header->setFont(mono);
    root->addWidget(header);
    QPlainTextEdit* log = binder_.makeLog(m.MessageDisplay, win);
    log->setFont(mono);
    root->addWidget(log, 1);
    return win;
}

FormWindow* Windows::buildSmall(Form& f, const std::vector<Control*>& rows) {
    auto* win = new FormWindow(f, binder_);
    auto* l = new QVBoxLayout(win);
    for (Control* c : rows) {
        QWidget* w = win->w(*c);
        if (auto* label = qobject_cast<QLabel*>(w)) label->setWordWrap(true);
        l->addWidget(w);
    }
    for (Control* c : f.controls())
        if (!binder_.widgetOf(*c) && !dynamic_cast<Timer*>(c)) {
            win->w(*c)->setProperty("tvUnplaced", true);
            win->w(*c)->setVisible(false);
        }
    if (f.width() <= 0) f.setWidth(360);
    if (f.height() <= 0) f.setHeight(std::max(120, win->sizeHint().height()));
    return win;
}

FormWindow* Windows::buildEditor(UserCommandSequenceDefinition& e) {
    auto* win = new FormWindow(e, binder_);
    auto W = [win](Control& c) { return win->w(c); };
    auto* root = new QGridLayout(win);
    root->addWidget(W(e.SequenceNameLabel), 0, 0);
    root->addWidget(W(e.SequenceName), 0, 1);
    root->addWidget(W(e.FunctionLabel), 1, 0);
    root->addWidget(W(e.SequenceTooltip), 1, 1, 1, 2);
    root->addWidget(W(e.CommandLabel), 2, 1);
    root->addWidget(W(e.NoteLabel), 2, 2);
    for (int i = 0; i < UserCommandSequenceDefinition::kSteps; ++i) {
        root->addWidget(W(e.SequenceLabel[i]), 3 + i, 0);
        root->addWidget(W(e.CmdValue[i]), 3 + i, 1);
        root->addWidget(W(e.CmdNote[i]), 3 + i, 2);
    }
    root->addWidget(W(e.ConfigComHelpCmd), 3 + UserCommandSequenceDefinition::kSteps, 2, Qt::AlignRight);
    root->setColumnStretch(1, 1);
    root->setColumnStretch(2, 1);
    return win;
}

}  // namespace tv
