#include "redaction/word_lists.h"

namespace tavrel::redaction {

const QStringList &englishWords()
{
    static const QStringList words =
        QStringLiteral(
            u"about account address after again agent amount animal answer apple april august balance bank basket "
            u"before below bottle branch bread bridge bright brother building business button camera cancel card "
            u"castle change cheese child church circle city client cloud coffee colour company contract corner "
            u"country course cousin credit customer danger daughter december delete delivery dinner doctor dollar "
            u"dream driver email engine entry error evening event example family farmer father figure finger "
            u"flower forest friday friend future garden gift glass green group guest hammer happy health heart "
            u"holiday home hospital hotel hour house husband image income invoice island january jacket journey "
            u"july june kitchen ladder language laptop large lawyer leader letter level library license light "
            u"little login lunch machine manager march market master meeting member memory message middle minute "
            u"mobile monday money month morning mother mountain music name nation network never night notice "
            u"november number nurse october offer office orange order other package page paper partner password "
            u"patient payment people person phone picture planet plastic please pocket police private problem "
            u"product profile project public purple quality quarter question quick reader reason record report "
            u"river salary sample saturday school secret sister status street student summer supplier system table "
            u"teacher ticket tomorrow village winter")
            .split(u' ');
    return words;
}

const QStringList &chineseWords()
{
    static const QStringList words =
        QStringLiteral(
            u"我们 他们 中国 工作 时间 问题 公司 学生 老师 学校 朋友 今天 明天 昨天 上午 下午 晚上 早上 现在 以后 "
            u"以前 电话 手机 电脑 网络 密码 账号 姓名 地址 城市 北京 上海 广州 深圳 天津 重庆 南京 杭州 成都 武汉 "
            u"银行 存款 贷款 余额 金额 价格 合同 协议 客户 经理 员工 工资 奖金 会议 报告 计划 项目 产品 市场 销售 "
            u"采购 财务 法律 医院 医生 护士 病人 药品 检查 手术 身份 护照 签证 机票 酒店 旅游 汽车 火车 飞机 地铁 "
            u"司机 道路 房屋 租金 房东 邻居 家庭 父亲 母亲 儿子 女儿 丈夫 妻子 兄弟 姐妹 孩子 生日 年龄 性别 职业 "
            u"教育 大学 专业 考试 成绩 作业 课程 图书 音乐 电影 游戏 运动 足球 篮球 健康 食品 水果 蔬菜 牛奶 面包 "
            u"咖啡 茶叶 米饭 早餐 午餐 晚餐 天气 温度 春天 夏天 秋天 冬天 太阳 月亮 星期 日期 小时 分钟 世界 国家 "
            u"政府 社会 经济 文化 历史 科学 技术 信息 数据 系统 软件 程序 文件 图片 视频 声音 消息 邮件 链接 登录 "
            u"注册 确认 取消 保存 删除 修改 添加 搜索 设置 帮助 安全 风险 保险 投资 股票 基金 利息 税务 发票 订单 "
            u"支付 退款 物流 快递 仓库 工厂 机器 材料 质量 标准 红色 蓝色 绿色 黑色 白色 左边 右边 前面 后面 中间")
            .split(u' ');
    return words;
}

} // namespace tavrel::redaction
