// wiring: three objects connected in code. A weather station sends values of every type, a board shows each in its own
// type, and a journal takes notes as text, whatever the type was. It is done once in each of the three modes.
#include <morvaqnds.h>

#include <cstdio>

namespace {

/** Has one output for each type of value. */
class Station : public qnObj {
public:
    Station()
        : bell_(addOutput("bell", qnDT_void)),
          raining_(addOutput("raining", qnDT_qnBool)),
          visitors_(addOutput("visitors", qnDT_int)),
          seconds_(addOutput("seconds", qnDT_long)),
          wind_(addOutput("wind", qnDT_float)),
          pressure_(addOutput("pressure", qnDT_double)),
          place_(addOutput("place", qnDT_CharPtr)),
          outlook_(addOutput("outlook", qnDT_qnStr)),
          towns_(addOutput("towns", qnDT_qnStrArray)) {}

    const char* className() const override { return "Station"; }

    void report(qnSendFlags mode) {
        sendVoid(bell_, mode);
        sendBool(raining_, 1, mode);
        sendInt(visitors_, 12, mode);
        sendLong(seconds_, 86400, mode);
        sendFloat(wind_, 2.5f, mode);
        sendDouble(pressure_, 1013.25, mode);
        sendCharPtr(place_, "Elm Hill", mode);
        sendData(outlook_, new qnStrData("showers"), mode);
        qnStrArray towns;
        qnStr ash("Ash"), oak("Oak");
        towns.append(&ash);
        towns.append(&oak);
        sendData(towns_, new qnStrArrayData(towns), mode);
    }

private:
    qnOutputChannel* bell_;
    qnOutputChannel* raining_;
    qnOutputChannel* visitors_;
    qnOutputChannel* seconds_;
    qnOutputChannel* wind_;
    qnOutputChannel* pressure_;
    qnOutputChannel* place_;
    qnOutputChannel* outlook_;
    qnOutputChannel* towns_;
};

/** Has one input for each type of value: a function that takes the value, whose type the input has. */
class Board : public qnObj {
public:
    Board() {
        addInput("bell", this, &onBell);
        addInput("raining", this, &onRaining);
        addInput("visitors", this, &onVisitors);
        addInput("seconds", this, &onSeconds);
        addInput("wind", this, &onWind);
        addInput("pressure", this, &onPressure);
        addInput("place", this, &onPlace);
        addInput("outlook", this, &onOutlook);
        addInput("towns", this, &onTowns);
    }

    const char* className() const override { return "Board"; }

private:
    static void onBell(Board*) { std::printf("board    bell\n"); }
    static void onRaining(Board*, qnBool value) { std::printf("board    raining   %d\n", value); }
    static void onVisitors(Board*, int value) { std::printf("board    visitors  %d\n", value); }
    static void onSeconds(Board*, long value) { std::printf("board    seconds   %ld\n", value); }
    static void onWind(Board*, float value) { std::printf("board    wind      %.2f\n", static_cast<double>(value)); }
    static void onPressure(Board*, double value) { std::printf("board    pressure  %.2f\n", value); }
    static void onPlace(Board*, const char* value) { std::printf("board    place     %s\n", value); }
    static void onOutlook(Board*, const qnStr& value) { std::printf("board    outlook   %s\n", value.text()); }
    static void onTowns(Board*, const qnStrArray& value) {
        std::printf("board    towns    ");
        for (unsigned i = 0; i < value.length(); ++i) std::printf(" %s", value.elements()[i].text());
        std::printf("\n");
    }
};

/** Takes text, and numbers its notes. */
class Journal : public qnObj {
public:
    Journal() { addInput("note", this, &onNote); }

    const char* className() const override { return "Journal"; }

private:
    static void onNote(Journal* journal, const char* text) {
        std::printf("journal  note %-2d   %s\n", ++journal->notes_, text);
    }

    int notes_ = 0;
};

void connectAll(Station& station, Board& board, Journal& journal) {
    const char* names[] = {"bell", "raining", "visitors", "seconds", "wind", "pressure", "place", "outlook", "towns"};
    for (const char* name : names) station.connect(name, &board, name);

    // None of these is text in the form that the journal takes: each connection puts a converter in between.
    const char* notes[] = {"visitors", "wind", "pressure", "outlook"};
    for (const char* name : notes) station.connect(name, &journal, "note");
}

void run(const char* mode, qnObj::qnSendFlags flag, Station& station) {
    std::printf("%s:\n", mode);
    station.report(flag);
    std::printf("all is sent\n");
    qn_theEventHandler->distributeEvents();  // what the event loop does at the end of every cycle
}

}  // namespace

int main() {
    qnInitializeToolkit();
    {
        Station station;
        Board board;
        Journal journal;
        connectAll(station, board, journal);
        run("immediate", qnObj::qnSF_Immediate, station);
        run("queued", qnObj::qnSF_Queued, station);
        run("urgent", qnObj::qnSF_Urgent, station);
    }
    qnCleanupGlobalOrderings();
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? 0 : 1;
}
