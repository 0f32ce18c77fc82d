// The yardstick of bench_websocket: a server of node's ws that gives back each message. Prints its port.
'use strict';
const { WebSocketServer } = require('ws');

const server = new WebSocketServer({ host: '127.0.0.1', port: 0, perMessageDeflate: false });
server.on('connection', (socket) => socket.on('message', (data) => socket.send(data, { binary: false })));
server.on('listening', () => console.log(server.address().port));
