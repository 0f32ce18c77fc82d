// A page in a headless browser: node browser.js CHROMIUM PAGE
//
// Opens PAGE, tells what it writes to its console, and runs the lines of standard input in it.
'use strict';
const readline = require('readline');
const { chromium } = require('playwright-core');

const tell = (...words) => process.stdout.write(words.join(' ') + '\n');
const [executablePath, address] = process.argv.slice(2);

(async () => {
    const browser = await chromium.launch({
        executablePath,
        timeout: 0, // the test has its own
        args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-sync',
               '--disable-background-networking', '--disable-component-update'],
    });
    const page = await (await browser.newContext({ ignoreHTTPSErrors: true })).newPage();
    page.on('console', (message) => tell('console', message.text()));
    page.on('pageerror', (error) => tell('error', error.message));
    await page.goto(address, { timeout: 0 });
    tell('loaded');
    for await (const line of readline.createInterface({ input: process.stdin }))
        await page.evaluate(line);
    await browser.close();
})().catch((error) => { tell('failed', error.message); process.exit(1); });
