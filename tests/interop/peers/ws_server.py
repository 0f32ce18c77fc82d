"""A WebSocket server: ws_server.py [CERTIFICATE KEY]

Prints "ready PORT", then what happens. Gives back each message, unless it is one of the orders below.
"""

import asyncio
import ssl
import sys

import websockets


def tell(*words):
    print(*words, flush=True)


async def talk(socket, path=None):
    tell("open", socket.path)
    try:
        async for message in socket:
            words = message.split(" ") if len(message) < 100 else ["echo"]
            if words[0] == "close":
                await socket.close(int(words[1]), " ".join(words[2:]))
            elif words[0] == "vanish":
                socket.transport.abort()
            elif words[0] == "fragments":
                await socket.send(words[1:])
            elif words[0] == "size":
                await socket.send("x" * int(words[1]))
            elif words[0] == "ping":
                await asyncio.wait_for(await socket.ping(words[1]), 10)
                await socket.send("pong came")
            else:
                await socket.send(message)
    except websockets.ConnectionClosed:
        pass
    tell("closed", socket.close_code, socket.close_reason)


async def main():
    context = None
    if len(sys.argv) == 3:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(sys.argv[1], sys.argv[2])
    server = await websockets.serve(talk, "127.0.0.1", 0, ssl=context, max_size=None, ping_interval=None)
    tell("ready", server.sockets[0].getsockname()[1])
    await asyncio.Future()


asyncio.run(main())
