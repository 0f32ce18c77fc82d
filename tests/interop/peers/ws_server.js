// A WebSocket server: node ws_server.js [CERTIFICATE KEY]
//
// Prints "ready PORT", then what happens. Gives back each message, unless it is one of the orders below.
'use strict';
const fs = require('fs');
const http = require('http');
const https = require('https');
const { WebSocketServer } = require('ws');

const tell = (...words) => process.stdout.write(words.join(' ') + '\n');
const [certificate, key] = process.argv.slice(2);
const web = certificate
    ? https.createServer({ cert: fs.readFileSync(certificate), key: fs.readFileSync(key) })
    : http.createServer();
const server = new WebSocketServer({ server: web, autoPong: false });

server.on('connection', (socket, request) => {
    let answersPings = true;
    tell('open', request.url);
    socket.on('ping', (data) => { tell('ping', '[' + data + ']'); if (answersPings) socket.pong(data); });
    socket.on('pong', () => socket.send('pong came'));
    socket.on('error', (error) => tell('error', error.message));
    socket.on('close', (code, reason) => tell('closed', code, reason.toString()));
    socket.on('message', (data, isBinary) => {
        const text = data.toString();
        const words = text.length < 100 ? text.split(' ') : ['echo'];
        switch (words[0]) {
        case 'close': socket.close(...(words[1] ? [Number(words[1]), words.slice(2).join(' ')] : [])); break;
        case 'vanish': socket._socket.destroy(); break;
        case 'fragments':
            words.slice(1).forEach((word, index, all) => socket.send(word, { fin: index === all.length - 1 }));
            break;
        case 'size': socket.send('x'.repeat(Number(words[1]))); break;
        case 'invalid': socket.send(Buffer.from([0x61, 0xff]), { binary: false }); break;
        case 'mute': answersPings = false; break;
        case 'ping': socket.ping(words[1]); break;
        default: socket.send(data, { binary: isBinary });
        }
    });
});
web.listen(0, '127.0.0.1', () => tell('ready', web.address().port));
