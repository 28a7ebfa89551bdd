<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_AT">
<context>
    <name>TestBaseTabPluginWidget</name>
    <message>
        <source>Hello</source>
        <translation>Servus</translation>
    </message>
</context>
</TS>
