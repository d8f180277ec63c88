<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="zh">
<context>
    <name>coagulation::UpdateBase</name>
    <message>
        <source>zh</source>
        <translation>first</translation>
    </message>
</context>
</TS>
