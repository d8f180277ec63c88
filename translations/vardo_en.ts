<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>coagulation::UpdateBase</name>
    <message>
        <source>zh</source>
        <translation>en</translation>
    </message>
</context>
<context>
    <name>coagulation::UpdateProfile</name>
    <message>
        <source>zh</source>
        <translation>en</translation>
    </message>
    <message>
        <source>测量仪器</source>
        <translation>Instrument</translation>
    </message>
    <message>
        <source>梯度1</source>
        <translation>Gradient 1</translation>
    </message>
    <message>
        <source>梯度2</source>
        <translation>Gradient 2</translation>
    </message>
    <message>
        <source>梯度3</source>
        <translation>Gradient 3</translation>
    </message>
    <message>
        <source>梯度4</source>
        <translation>Gradient 4</translation>
    </message>
    <message>
        <source>样本类型</source>
        <translation>Sample type</translation>
    </message>
    <message>
        <source>初始量[ul]</source>
        <translation>Initial volume [ul]</translation>
    </message>
    <message>
        <source>报警限[ul]</source>
        <translation>Alarm limit [ul]</translation>
    </message>
    <message>
        <source>中断限[ul]</source>
        <translation>Interrupt limit [ul]</translation>
    </message>
    <message>
        <source>住院号</source>
        <translation>Hospital no.</translation>
    </message>
    <message>
        <source>备注</source>
        <translation>Remarks</translation>
    </message>
    <message>
        <source>打印时间</source>
        <translation>Time of printing</translation>
    </message>
    <message>
        <source>传输时间</source>
        <translation>Time of transmission</translation>
    </message>
    <message>
        <source>活化部分凝血活酶时间</source>
        <translation>Activated partial thromboplastin time</translation>
    </message>
    <message>
        <source>送检时间</source>
        <translation>Time of submission</translation>
    </message>
    <message>
        <source>采样时间</source>
        <translation>Time of sampling</translation>
    </message>
    <message>
        <source>测试时间</source>
        <translation>Time of test</translation>
    </message>
    <message>
        <source>审核时间</source>
        <translation>Time of validation</translation>
    </message>
</context>
</TS>
