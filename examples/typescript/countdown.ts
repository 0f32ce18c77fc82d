// Counts down, a second at a time, in the newest syntax: npx tsc -p . && kyrun out/countdown.js
class Countdown {
    private readonly timer = new Timer();
    private left: number;

    constructor(seconds: number) {
        this.left = seconds;
    }

    async run(): Promise<string> {
        while (this.left > 0) {
            print("still", this.left--);
            await this.wait(1000);
        }
        return "done";
    }

    private wait(msec: number): Promise<void> {
        return new Promise(resolve => {
            this.timer.setSingleShot(true);
            this.timer.timeout.connect(() => resolve());
            this.timer.start(msec);
        });
    }
}

var countdown = new Countdown(3);
Runner.keepRunning = true;
countdown.run().then(text => {
    print(text);
    Runner.exit();
});
