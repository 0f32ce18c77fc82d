// Waits for a text that another program writes to a file, and prints it. Looks once in a while.
//
//   kyrun watch_file.js FILE [SECONDS]

var PERIOD = 200; // milliseconds

var path = Runner.args[0];
var end = Date.now() + 1000 * Number(Runner.args[1] || 60);
var before = "";

// A file is read byte by byte; this is the text that the bytes are in UTF-8.
function decoded(bytes) {
    return decodeURIComponent(escape(bytes));
}

function look() {
    var bytes = System.fileReadAll(path);
    if (bytes !== "" && bytes === before) { // the same twice: the other program is done
        timer.stop();
        print(decoded(bytes));
        Runner.exit(0);
    } else if (Date.now() > end) {
        Message.error("Nobody has written " + path);
        Runner.exit(1);
    }
    before = bytes;
}

var timer = new Timer(); // a global: a timer that nothing refers to goes at the next garbage collection
timer.timeout.connect(look);
timer.start(PERIOD);
Runner.keepRunning = true;
