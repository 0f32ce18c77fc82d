// A WebSocket client that does what it is told on standard input: node ws_client.js URL
//
// Prints what happens, one line each. A long message is told by its length.
'use strict';
const readline = require('readline');
const WebSocket = require('ws');

const tell = (...words) => process.stdout.write(words.join(' ') + '\n');
const socket = new WebSocket(process.argv[2], { rejectUnauthorized: false });

socket.on('open', () => tell('open'));
socket.on('error', (error) => tell('error', error.message));
socket.on('close', (code, reason) => tell('closed', code, reason.toString()));
socket.on('pong', (data) => tell('pong', data.toString()));
socket.on('message', (data) => tell('message', data.length < 1000 ? data.toString() : 'of ' + data.length));

readline.createInterface({ input: process.stdin }).on('line', (order) => {
    const words = order.split(' ');
    switch (words[0]) {
    case 'text': socket.send(order.slice('text '.length)); break;
    case 'size': socket.send('x'.repeat(Number(words[1]))); break;
    case 'fragments':
        words.slice(1).forEach((word, index, all) => socket.send(word, { fin: index === all.length - 1 }));
        break;
    case 'binary': socket.send(Buffer.from([0, 255])); break;
    case 'invalid': socket.send(Buffer.from([0x61, 0xff]), { binary: false }); break;
    case 'ping': socket.ping(words[1]); break;
    case 'close': socket.close(...(words[1] ? [Number(words[1]), words.slice(2).join(' ')] : [])); break;
    case 'vanish': socket._socket.destroy(); break;
    }
});
